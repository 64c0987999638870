// A hash of text for tables whose keys come from untrusted sources: without the hash's own secret key, nobody can
// construct texts with equal hashes.
#pragma once

#include <bit>
#include <cstdint>
#include <random>
#include <string_view>

namespace qx
{

// SipHash-2-4 (Aumasson, Bernstein: SipHash: a fast short-input PRF, 2012) of the characters' little-endian bytes.
class KeyedHash
{
public:
    KeyedHash(std::uint64_t firstKey, std::uint64_t secondKey) : _first(firstKey), _second(secondKey) {}

    // Returns a hash with a random key, which is different in each process.
    static KeyedHash Random()
    {
        std::random_device source;
        std::uniform_int_distribution<std::uint64_t> word;
        const std::uint64_t first = word(source);
        return {first, word(source)};
    }

    // Texts that differ only in the case of A to Z have the same hash.
    std::uint64_t WithoutCase(std::wstring_view text) const noexcept
    {
        State state(_first, _second);
        std::uint64_t word = 0;
        unsigned bits = 0;
        for (const wchar_t unit : text)
        {
            word |= std::uint64_t{Lower(unit)} << bits;
            bits += 16;
            if (bits < 64)
                continue;
            state.Add(word);
            word = 0;
            bits = 0;
        }
        state.Add(word | std::uint64_t{2 * text.size()} << 56);
        return state.End();
    }

private:
    class State
    {
    public:
        State(std::uint64_t first, std::uint64_t second)
            : _v0(first ^ 0x736F6D6570736575),
              _v1(second ^ 0x646F72616E646F6D),
              _v2(first ^ 0x6C7967656E657261),
              _v3(second ^ 0x7465646279746573)
        {
        }

        void Add(std::uint64_t word)
        {
            _v3 ^= word;
            Rounds(2);
            _v0 ^= word;
        }

        std::uint64_t End()
        {
            _v2 ^= 0xFF;
            Rounds(4);
            return _v0 ^ _v1 ^ _v2 ^ _v3;
        }

    private:
        void Rounds(int count)
        {
            for (; count != 0; --count)
            {
                _v0 += _v1;
                _v2 += _v3;
                _v1 = std::rotl(_v1, 13) ^ _v0;
                _v3 = std::rotl(_v3, 16) ^ _v2;
                _v0 = std::rotl(_v0, 32);
                _v2 += _v1;
                _v0 += _v3;
                _v1 = std::rotl(_v1, 17) ^ _v2;
                _v3 = std::rotl(_v3, 21) ^ _v0;
                _v2 = std::rotl(_v2, 32);
            }
        }

        std::uint64_t _v0;
        std::uint64_t _v1;
        std::uint64_t _v2;
        std::uint64_t _v3;
    };

    static std::uint16_t Lower(wchar_t unit)
    {
        return static_cast<std::uint16_t>(unit >= L'A' && unit <= L'Z' ? unit + (L'a' - L'A') : unit);
    }

    std::uint64_t _first;
    std::uint64_t _second;
};

} // namespace qx
