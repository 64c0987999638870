// The serialised form of a profile, while it is in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx
{

class clsFile;

// Grows by chunks, so that what is written is never moved, and goes to its target in a few large writes.
class clsProfOutput
{
public:
    // Room for so many characters in one piece. What is used of it is told by its end.
    wchar_t* Reserve(size_t count)
    {
        if (static_cast<size_t>(_end - _next) < count)
            StartChunk(count);
        return _next;
    }
    void SetUsed(wchar_t* end) { _next = end; }

    bool IsEmpty() const { return Bytes() == 0; }
    uint64_t Bytes() const;

    // Writes all to the target's position. False if not all of it could be written.
    bool WriteTo(clsFile& target) const;

private:
    static constexpr size_t kFirstChunk = size_t{1} << 12; // in characters
    static constexpr size_t kLargestChunk = size_t{1} << 20;

    struct Chunk
    {
        std::unique_ptr<wchar_t[]> text;
        size_t used; // of all but the last
    };

    void StartChunk(size_t count);
    size_t UsedOf(const Chunk& chunk) const;

    wchar_t* _next = nullptr;
    wchar_t* _end = nullptr;
    size_t _chunkSize = kFirstChunk;
    std::vector<Chunk> _chunks;
};

} // namespace qx
