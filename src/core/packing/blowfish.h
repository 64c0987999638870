// Blowfish with 16 rounds (B. Schneier, 1993) on a block of memory, without chaining.
//
// It differs from the published algorithm in two ways: the two words of a block are in little-endian order in memory,
// and if the size of a buffer is not a multiple of 8, its last 8 bytes are an additional block that overlaps the
// previous one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qx
{

class clsBlowfish
{
public:
    // Uses the first 72 bytes of a zero-terminated key. A shorter key is extended to 72 bytes by this library's own
    // rule.
    explicit clsBlowfish(const char* key);
    clsBlowfish(const clsBlowfish&) = delete;
    clsBlowfish& operator=(const clsBlowfish&) = delete;
    // Erases the key and everything derived from it.
    ~clsBlowfish();

    // Encrypts in place. Leaves buffers of less than 8 bytes unchanged.
    void Encode(void* buffer, std::size_t size) const;

    // Reverses `Encode`.
    void Decode(void* buffer, std::size_t size) const;

private:
    struct Block
    {
        std::uint32_t left, right;
    };

    void CopyKey(const char* key);
    void ExpandKey();
    std::uint32_t Round(std::uint32_t word) const;
    Block Encipher(Block block) const;
    Block Decipher(Block block) const;
    void Apply(Block (clsBlowfish::*cipher)(Block) const, unsigned char* at) const;

    static constexpr std::size_t kKeyLength = 72;

    std::array<char, kKeyLength + 4> _key{};
    std::array<std::uint32_t, 18> _p{};
    std::array<std::array<std::uint32_t, 256>, 4> _s{};
};

} // namespace qx
