#include "prof/output.h"

#include "files/file.h"

#include <algorithm>

namespace qx
{

void clsProfOutput::StartChunk(size_t count)
{
    const size_t size = std::max(count, _chunkSize);
    std::unique_ptr<wchar_t[]> text(new wchar_t[size]);
    if (!_chunks.empty())
        _chunks.back().used = UsedOf(_chunks.back());
    _next = text.get();
    _end = _next + size;
    _chunks.push_back({std::move(text), 0});
    _chunkSize = std::min(_chunkSize * 2, kLargestChunk);
}

size_t clsProfOutput::UsedOf(const Chunk& chunk) const
{
    return &chunk == &_chunks.back() ? static_cast<size_t>(_next - chunk.text.get()) : chunk.used;
}

uint64_t clsProfOutput::Bytes() const
{
    uint64_t characters = 0;
    for (const Chunk& chunk : _chunks)
        characters += UsedOf(chunk);
    return characters * sizeof(wchar_t);
}

bool clsProfOutput::WriteTo(clsFile& target) const
{
    return std::all_of(_chunks.begin(), _chunks.end(),
        [&](const Chunk& chunk)
        {
            const uint64_t bytes = UsedOf(chunk) * sizeof(wchar_t);
            return bytes == 0 || target.Write(chunk.text.get(), bytes) == static_cast<int64_t>(bytes);
        });
}

} // namespace qx
