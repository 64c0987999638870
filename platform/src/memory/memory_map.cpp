#include "memory/memory_map.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// The lines of /proc/self/maps, read in pieces. Each line is parsed up to the inode number, and its rest is skipped.
class MapLines
{
public:
    MapLines() : _file(static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/proc/self/maps", O_RDONLY | O_CLOEXEC))) {}
    MapLines(const MapLines&) = delete;
    MapLines& operator=(const MapLines&) = delete;
    ~MapLines()
    {
        if (_file >= 0)
            syscall(SYS_close, _file);
    }

    // Reads a line: "begin-end rwxp offset device file name".
    bool Next(Mapping& mapping)
    {
        mapping = Mapping();
        mapping.begin = ReadNumber(16);
        mapping.end = ReadNumber(16);
        mapping.isReadable = Read() == 'r';
        mapping.isWritable = Read() == 'w';
        mapping.isExecutable = Read() == 'x';
        mapping.isShared = Read() == 's';
        Read();
        ReadNumber(16); // the offset
        ReadNumber(16); // both parts of the device
        ReadNumber(16);
        bool isLineEnd = false;
        mapping.isFile = ReadNumber(10, &isLineEnd) != 0;
        while (!isLineEnd && !_isAtEnd)
            isLineEnd = Read() == '\n';
        return mapping.end != 0;
    }

private:
    char Read()
    {
        if (_at == _count)
        {
            const long count = _file < 0 ? -1 : Fill();
            _isAtEnd = count <= 0;
            _count = _isAtEnd ? 0 : static_cast<std::size_t>(count);
            _at = 0;
        }
        return _isAtEnd ? '\0' : _buffer[_at++];
    }

    long Fill()
    {
        long count;
        do
            count = syscall(SYS_read, _file, _buffer, sizeof _buffer);
        while (count < 0 && errno == EINTR);
        return count;
    }

    // Reads a number and the character after it.
    std::uintptr_t ReadNumber(unsigned base, bool* isLineEnd = nullptr)
    {
        std::uintptr_t number = 0;
        for (;;)
        {
            const char digit = Read();
            if (digit >= '0' && digit <= '9')
                number = number * base + static_cast<unsigned>(digit - '0');
            else if (digit >= 'a' && digit <= 'f')
                number = number * base + static_cast<unsigned>(digit - 'a' + 10);
            else
            {
                if (isLineEnd != nullptr)
                    *isLineEnd = digit == '\n';
                return number;
            }
        }
    }

    const int _file;
    bool _isAtEnd = false;
    std::size_t _at = 0;
    std::size_t _count = 0;
    char _buffer[1024];
};

} // namespace

bool FindMapping(std::uintptr_t address, Mapping& mapping)
{
    const int kept = errno;
    MapLines lines;
    bool isFound = false;
    while (!isFound && lines.Next(mapping))
        isFound = mapping.end > address;
    errno = kept;
    return isFound;
}

} // namespace qxplatform
