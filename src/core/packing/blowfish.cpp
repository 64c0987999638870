#include "core/packing/blowfish.h"

#include "core/debug_line.h"
#include "core/packing/blowfish_tables.h"
#include "core/wipe.h"

#include <cstring>
#include <utility>

namespace qx
{
namespace
{

constexpr std::size_t kBlockSize = 8;

std::uint32_t LoadWord(const unsigned char* at)
{
    return static_cast<std::uint32_t>(at[3]) << 24 | static_cast<std::uint32_t>(at[2]) << 16 | at[1] << 8 | at[0];
}

void StoreWord(unsigned char* at, std::uint32_t word)
{
    for (int i = 0; i < 4; ++i)
        at[i] = static_cast<unsigned char>(word >> (8 * i));
}

} // namespace

clsBlowfish::clsBlowfish(const char* key) : _p(kBlowfishInitialP), _s(kBlowfishInitialS)
{
    CopyKey(key);
    ExpandKey();
}

clsBlowfish::~clsBlowfish()
{
    Wipe(_key.data(), sizeof _key);
    Wipe(_p.data(), sizeof _p);
    Wipe(_s.data(), sizeof _s);
}

void clsBlowfish::CopyKey(const char* key)
{
    std::size_t length = strnlen(key, kKeyLength);
    std::memcpy(_key.data(), key, length);
    // For an empty key, the byte before the first one counts as zero.
    unsigned previous = length == 0 ? 0 : static_cast<unsigned char>(_key[length - 1]);
    for (; length < kKeyLength; ++length)
    {
        previous = previous * static_cast<unsigned>(length) * 97 % 255 + 1;
        _key[length] = static_cast<char>(previous);
    }
}

void clsBlowfish::ExpandKey()
{
    for (std::size_t word = 0; word < _p.size(); ++word)
        for (std::size_t i = 0; i < 4; ++i)
            _p[word] ^= static_cast<std::uint32_t>(static_cast<unsigned char>(_key[(word * 4 + i) % kKeyLength]))
                        << (24 - 8 * i);

    Block block{0, 0};
    const auto replacePairs = [&](auto& words)
    {
        for (std::size_t i = 0; i < words.size(); i += 2)
        {
            block = Encipher(block);
            words[i] = block.left;
            words[i + 1] = block.right;
        }
    };
    replacePairs(_p);
    for (auto& box : _s)
        replacePairs(box);
}

inline std::uint32_t clsBlowfish::Round(std::uint32_t word) const
{
    return ((_s[0][word >> 24] + _s[1][word >> 16 & 0xFF]) ^ _s[2][word >> 8 & 0xFF]) + _s[3][word & 0xFF];
}

clsBlowfish::Block clsBlowfish::Encipher(Block block) const
{
    for (std::size_t round = 0; round < 16; ++round)
    {
        block.left ^= _p[round];
        block.right ^= Round(block.left);
        std::swap(block.left, block.right);
    }
    return {block.right ^ _p[17], block.left ^ _p[16]};
}

clsBlowfish::Block clsBlowfish::Decipher(Block block) const
{
    for (std::size_t round = 17; round > 1; --round)
    {
        block.left ^= _p[round];
        block.right ^= Round(block.left);
        std::swap(block.left, block.right);
    }
    return {block.right ^ _p[0], block.left ^ _p[1]};
}

void clsBlowfish::Apply(Block (clsBlowfish::*cipher)(Block) const, unsigned char* at) const
{
    const Block block = (this->*cipher)({LoadWord(at), LoadWord(at + 4)});
    StoreWord(at, block.left);
    StoreWord(at + 4, block.right);
}

void clsBlowfish::Encode(void* buffer, std::size_t size) const
{
    if (size < kBlockSize)
    {
        DebugLine(L"clsBlowfish::Encode: buffer too small!!!");
        return;
    }
    auto* bytes = static_cast<unsigned char*>(buffer);
    // The overlapping tail is encrypted first, because `Decode`, which works from front to back, decrypts it last.
    if (size % kBlockSize != 0)
        Apply(&clsBlowfish::Encipher, bytes + size - kBlockSize);
    for (std::size_t offset = 0; offset + kBlockSize <= size; offset += kBlockSize)
        Apply(&clsBlowfish::Encipher, bytes + offset);
}

void clsBlowfish::Decode(void* buffer, std::size_t size) const
{
    if (size < kBlockSize)
    {
        DebugLine(L"clsBlowfish::Decode: buffer too small!!!");
        return;
    }
    auto* bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t offset = 0; offset + kBlockSize <= size; offset += kBlockSize)
        Apply(&clsBlowfish::Decipher, bytes + offset);
    if (size % kBlockSize != 0)
        Apply(&clsBlowfish::Decipher, bytes + size - kBlockSize);
}

} // namespace qx
