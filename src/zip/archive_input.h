// The file of an archive, open for reading by minizip and by the library.
#pragma once

#include "core/packing/byte_block.h"
#include "core/text/string.h"
#include "files/file.h"

#include <minizip/ioapi.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qx
{

// A buffered file with the file functions of minizip.
class clsArchiveInput
{
public:
    // Opens a file. Pipes and devices are refused without waiting for them.
    explicit clsArchiveInput(const String& path);
    clsArchiveInput(const clsArchiveInput&) = delete;
    clsArchiveInput& operator=(const clsArchiveInput&) = delete;

    bool IsOpen() const { return _file.has_value(); }
    std::uint64_t Size() const { return _size; }

    // Reads `count` bytes at the position and advances it. Returns the number of bytes read, which is smaller only at
    // the end of the file or after an error.
    std::size_t Read(void* target, std::size_t count);
    void SetPosition(std::uint64_t position) { _position = position; }
    bool ReadAt(std::uint64_t position, void* target, std::size_t count);

    // Returns the functions for unzOpen2_64. They refer to this object.
    zlib_filefunc64_def Functions();

    // WatchSeeks starts recording; FirstSeek returns the position of the first seek since then. minizip seeks to an
    // entry of the directory to read it, but doesn't report the position of the entry in any other way.
    void WatchSeeks() { _firstSeek.reset(); }
    std::optional<std::uint64_t> FirstSeek() const { return _firstSeek; }

private:
    long Seek(std::uint64_t offset, int origin);

    std::optional<clsFileRO> _file;
    std::uint64_t _size = 0;
    std::uint64_t _position = 0;
    ByteBlock _buffer;
    std::uint64_t _bufferAt = 0;
    std::size_t _bufferCount = 0;
    std::optional<std::uint64_t> _firstSeek;
};

} // namespace qx
