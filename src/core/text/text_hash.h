// A hash of text, for String and for text that is not stored in a String.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qx
{

// Returns a 64-bit hash of the bytes of the text: as many 8-byte words as fit, then at most one of 4 bytes and one of 2
// bytes. The words are read as little-endian, the byte order of both targets. The hash isn't seeded, so an attacker who
// controls the texts can produce collisions.
inline std::uint64_t TextHash(std::wstring_view text) noexcept
{
    constexpr std::uint64_t kFactor = 0x9DDFEA08EB382D69;
    std::uint64_t hash = 0;
    const auto mix = [&](std::uint64_t unit)
    {
        const std::uint64_t a = (unit ^ hash) * kFactor;
        const std::uint64_t b = ((a >> 47) ^ a ^ hash) * kFactor;
        hash = ((b >> 47) ^ b) * kFactor;
    };

    const wchar_t* next = text.data();
    std::size_t left = text.size();
    for (; left >= 4; left -= 4, next += 4)
    {
        std::uint64_t unit;
        memcpy(&unit, next, sizeof(unit));
        mix(unit);
    }
    if (left >= 2)
    {
        std::uint32_t unit;
        memcpy(&unit, next, sizeof(unit));
        mix(unit);
        left -= 2;
        next += 2;
    }
    if (left != 0)
        mix(static_cast<std::uint16_t>(*next));
    return hash;
}

} // namespace qx
