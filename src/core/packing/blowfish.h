// Blowfish with 16 rounds (B. Schneier, 1993) on a block of memory, without chaining.
//
// Two things differ from the published use: the two words of a block stand in memory in little-endian order, and a
// buffer whose size is no multiple of 8 is covered by letting its last 8 bytes overlap the whole blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qx
{

class clsBlowfish
{
public:
    // The first 72 bytes of a zero-terminated key; a shorter key is extended to 72 bytes by a rule of its own.
    explicit clsBlowfish(const char* key);

    // Enciphers in place. A buffer below 8 bytes stays unchanged.
    void Encode(void* buffer, std::size_t size) const;

    // The inverse of `Encode`.
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

    static constexpr std::size_t kEyLength = 72;

    std::array<char, kEyLength + 4> _key{};
    std::array<std::uint32_t, 18> _p{};
    std::array<std::array<std::uint32_t, 256>, 4> _s{};
};

} // namespace qx
