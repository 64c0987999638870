// The serialised form of a profile, while it is in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx
{

class clsFile;

// Grows by chunks, so that what is written is never moved, and goes to its target in a few large writes. It is wide
// text as a rule; forms of 8 bits and packed data are written as bytes. One output holds either the one or the other.
class clsProfOutput
{
public:
    // Room for so many characters, or bytes, in one piece. What is used of it is told by its end.
    wchar_t* Reserve(std::size_t count) { return static_cast<wchar_t*>(Room(count * sizeof(wchar_t))); }
    char* ReserveBytes(std::size_t count) { return static_cast<char*>(Room(count)); }
    void SetUsed(void* end) { _next = static_cast<std::byte*>(end); }

    bool IsEmpty() const { return Bytes() == 0; }
    std::uint64_t Bytes() const;

    // Hands all pieces over in their order, as (const std::byte*, size_t), until one is refused; whether none was.
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

    // Writes all to the target's position. False if not all of it could be written.
    bool WriteTo(clsFile& target) const { return WriteTo(target, 0, Bytes()); }

    // Makes this the whole content of the target. What the target holds is overwritten only when there is room for all
    // of this: where there isn't, it stays as it was, and the result is false.
    bool ReplaceContentOf(clsFile& target) const;

private:
    static constexpr std::size_t kFirstChunk = std::size_t{1} << 13;
    static constexpr std::size_t kLargestChunk = std::size_t{1} << 21;

    struct Chunk
    {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t used; // of all but the last
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
