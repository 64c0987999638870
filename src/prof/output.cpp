#include "prof/output.h"

#include "files/file.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

void clsProfOutput::StartChunk(std::size_t bytes)
{
    const std::size_t size = std::max(bytes, _chunkSize);
    std::unique_ptr<std::byte[]> chunk(new std::byte[size]);
    if (!_chunks.empty())
        _chunks.back().used = UsedOf(_chunks.back());
    _next = chunk.get();
    _end = _next + size;
    _chunks.push_back({std::move(chunk), 0});
    _chunkSize = std::min(_chunkSize * 2, kLargestChunk);
}

std::size_t clsProfOutput::UsedOf(const Chunk& chunk) const
{
    return &chunk == &_chunks.back() ? static_cast<std::size_t>(_next - chunk.bytes.get()) : chunk.used;
}

std::uint64_t clsProfOutput::Bytes() const
{
    std::uint64_t bytes = 0;
    for (const Chunk& chunk : _chunks)
        bytes += UsedOf(chunk);
    return bytes;
}

bool clsProfOutput::WriteTo(clsFile& target, std::uint64_t begin, std::uint64_t end) const
{
    std::uint64_t start = 0; // of the piece
    return ForEachPiece(
        [&](const std::byte* piece, std::size_t size)
        {
            const std::uint64_t from = std::clamp(begin, start, start + size);
            const std::uint64_t to = std::clamp(end, start, start + size);
            const bool isWritten =
                from >= to || target.Write(piece + (from - start), to - from) == static_cast<std::int64_t>(to - from);
            start += size;
            return isWritten;
        });
}

// Writes the part beyond the old end first, into space reserved in one step. After that, overwriting the old contents
// needs no more space.
bool clsProfOutput::ReplaceContentOf(clsFile& target) const
{
    const std::uint64_t size = Bytes();
    const auto oldSize = static_cast<std::uint64_t>(std::max<std::int64_t>(target.GetSize(), 0));
    if (size > oldSize)
    {
        target.Seek(static_cast<std::int64_t>(oldSize));
        target.Reserve(static_cast<std::int64_t>(size - oldSize));
        if (!WriteTo(target, oldSize, size))
        {
            target.Seek(static_cast<std::int64_t>(oldSize));
            target.SetEOF();
            return false;
        }
    }
    target.Seek(std::int64_t{0});
    if (!WriteTo(target, 0, std::min(size, oldSize)))
        return false;
    target.Seek(static_cast<std::int64_t>(size));
    target.SetEOF();
    return true;
}

} // namespace qx
