// The serialised form of a profile in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx
{

class clsFile;

// Consists of chunks, so that it grows without moving data and is written in a few large writes. It normally holds wide
// text; 8-bit forms and packed data are written as bytes. One output never mixes the two.
class clsProfOutput
{
public:
    // Return contiguous room for `count` characters or bytes. SetUsed must follow with the end of the part that was
    // filled.
    wchar_t* Reserve(std::size_t count) { return static_cast<wchar_t*>(Room(count * sizeof(wchar_t))); }
    char* ReserveBytes(std::size_t count) { return static_cast<char*>(Room(count)); }
    void SetUsed(void* end) { _next = static_cast<std::byte*>(end); }

    bool IsEmpty() const { return Bytes() == 0; }
    std::uint64_t Bytes() const;

    // Calls the visitor with each piece in order, as (const std::byte*, size_t), until it returns false. Returns true
    // if all calls returned true.
    template <class Visitor>
    bool ForEachPiece(Visitor visitor) const
    {
        for (const Chunk& chunk : _chunks)
        {
            if (const std::size_t used = UsedOf(chunk); used != 0 && !visitor(chunk.bytes.get(), used))
                return false;
        }
        return true;
    }

    // Writes everything at the target's current position. Returns false if the write was incomplete.
    bool WriteTo(clsFile& target) const { return WriteTo(target, 0, Bytes()); }

    // Replaces the contents of the target. Old contents are overwritten only if there is room for everything. Otherwise
    // the target stays unchanged, and the result is false.
    bool ReplaceContentOf(clsFile& target) const;

private:
    static constexpr std::size_t kFirstChunk = std::size_t{1} << 13;
    static constexpr std::size_t kLargestChunk = std::size_t{1} << 21;

    struct Chunk
    {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t used; // of all chunks but the last
    };

    void* Room(std::size_t bytes)
    {
        if (static_cast<std::size_t>(_end - _next) < bytes)
            StartChunk(bytes);
        return _next;
    }
    void StartChunk(std::size_t bytes);
    std::size_t UsedOf(const Chunk& chunk) const;
    bool WriteTo(clsFile& target, std::uint64_t begin, std::uint64_t end) const;

    std::byte* _next = nullptr;
    std::byte* _end = nullptr;
    std::size_t _chunkSize = kFirstChunk;
    std::vector<Chunk> _chunks;
};

} // namespace qx
