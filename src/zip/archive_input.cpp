#include "zip/archive_input.h"

#include "files/handle_holder.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace qx
{
namespace
{

constexpr std::size_t kBufferBytes = 0x10000;

} // namespace

clsArchiveInput::clsArchiveInput(const String& path) : _buffer(kBufferBytes)
{
    clsGenericHandleObjectAutoRelease file(
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
            FILE_ATTRIBUTE_NORMAL, nullptr),
        true);
    if (!file.IsValid() || GetFileType(file.Get()) != FILE_TYPE_DISK)
        return;
    _file.emplace(file.Detach());
    _size = static_cast<std::uint64_t>(std::max<std::int64_t>(_file->GetSize(), 0));
}

std::size_t clsArchiveInput::Read(void* target, std::size_t count)
{
    auto* bytes = static_cast<unsigned char*>(target);
    std::size_t done = 0;
    while (done < count)
    {
        if (_position >= _bufferAt && _position < _bufferAt + _bufferCount)
        {
            const auto offset = static_cast<std::size_t>(_position - _bufferAt);
            const std::size_t part = std::min(count - done, _bufferCount - offset);
            std::memcpy(bytes + done, _buffer.data() + offset, part);
            done += part;
            _position += part;
            continue;
        }
        if (_position >= _size)
            break;
        _file->Seek(static_cast<std::int64_t>(_position));
        if (count - done >= kBufferBytes)
        {
            const auto wanted = static_cast<std::uint32_t>(std::min<std::size_t>(count - done, 1u << 30));
            const std::uint32_t read = _file->Read(bytes + done, wanted);
            if (read == 0)
                break;
            done += read;
            _position += read;
            continue;
        }
        _bufferAt = _position;
        _bufferCount = _file->Read(_buffer.data(), static_cast<std::uint32_t>(kBufferBytes));
        if (_bufferCount == 0)
            break;
    }
    return done;
}

bool clsArchiveInput::ReadAt(std::uint64_t position, void* target, std::size_t count)
{
    _position = position;
    return Read(target, count) == count;
}

long clsArchiveInput::Seek(std::uint64_t offset, int origin)
{
    const std::uint64_t base = origin == ZLIB_FILEFUNC_SEEK_SET   ? 0
                               : origin == ZLIB_FILEFUNC_SEEK_CUR ? _position
                                                                  : _size;
    const std::uint64_t position = base + offset;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return -1;
    if (!_firstSeek)
        _firstSeek = position;
    _position = position;
    return 0;
}

zlib_filefunc64_def clsArchiveInput::Functions()
{
    zlib_filefunc64_def functions{};
    functions.zopen64_file = [](voidpf self, const void*, int) -> voidpf
    {
        return self;
    };
    functions.zread_file = [](voidpf, voidpf self, void* buffer, uLong count)
    {
        return static_cast<uLong>(static_cast<clsArchiveInput*>(self)->Read(buffer, count));
    };
    functions.ztell64_file = [](voidpf, voidpf self) -> ZPOS64_T
    {
        return static_cast<clsArchiveInput*>(self)->_position;
    };
    functions.zseek64_file = [](voidpf, voidpf self, ZPOS64_T offset, int origin)
    {
        return static_cast<clsArchiveInput*>(self)->Seek(offset, origin);
    };
    functions.zclose_file = [](voidpf, voidpf)
    {
        return 0;
    };
    functions.zerror_file = [](voidpf, voidpf)
    {
        return 0;
    };
    functions.opaque = this;
    return functions;
}

} // namespace qx
