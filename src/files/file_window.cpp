#include "files/file_window.h"

#include "files/file.h"

#include <algorithm>
#include <cstring>

namespace qx
{
namespace
{

constexpr std::size_t kLeastWindowRead = 4096;

} // namespace

std::uint64_t FileWindow::Size()
{
    if (_size < 0)
        _size = std::max<std::int64_t>(_file.GetSize(), 0);
    return static_cast<std::uint64_t>(_size);
}

const std::uint8_t* FileWindow::At(std::uint64_t offset, std::size_t count)
{
    const auto isBuffered = [&]
    {
        return offset >= _begin && offset - _begin <= _count && count <= _count - (offset - _begin);
    };
    if (!isBuffered())
    {
        if (count > kCapacity || offset > static_cast<std::uint64_t>(INT64_MAX) - count)
            return nullptr;
        Fill(offset, count);
        if (!isBuffered())
            return nullptr;
    }
    return _buffer.get() + (offset - _begin);
}

std::size_t FileWindow::Read(std::uint64_t offset, void* buffer, std::size_t count)
{
    auto* const target = static_cast<std::uint8_t*>(buffer);
    std::size_t done = 0;
    while (done < count)
    {
        const std::size_t wanted = std::min(count - done, kCapacity);
        if (const std::uint8_t* const bytes = At(offset + done, wanted))
        {
            std::memcpy(target + done, bytes, wanted);
            done += wanted;
            continue;
        }
        // The file ends within this part; its remaining bytes are at the start of the buffer.
        if (offset + done == _begin)
        {
            std::memcpy(target + done, _buffer.get(), _count);
            done += _count;
        }
        break;
    }
    return done;
}

void FileWindow::Fill(std::uint64_t offset, std::size_t count)
{
    if (!_buffer)
        _buffer = std::make_unique_for_overwrite<std::uint8_t[]>(kCapacity);
    _begin = offset;
    _count = 0;
    if (offset >= Size() || !MoveTo(static_cast<std::int64_t>(offset)))
        return;
    const std::size_t wanted = std::max(count, kLeastWindowRead);
    while (_count < wanted)
    {
        const std::uint32_t read = _file.Read(_buffer.get() + _count, static_cast<std::uint32_t>(wanted - _count));
        if (read == 0)
            break;
        _count += read;
    }
    _position += static_cast<std::int64_t>(_count);
    _bytesRead += _count;
}

bool FileWindow::MoveTo(std::int64_t position)
{
    if (position == _position)
        return true;
    _file.Seek(position);
    _position = _file.Position();
    return position == _position;
}

clsFile& FileWindow::Rewind()
{
    _file.Seek(0);
    _position = -1; // unknown, because other code moves the file
    return _file;
}

} // namespace qx
