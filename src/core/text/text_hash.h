// The hash of a text, for strings and for texts that aren't held by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qx
{

// 64 bits over the bytes of the text: as many words of 8 bytes as fit, then one of 4, then one of 2, each taken
// little-endian. Both targets are. No secret goes into it, so outside texts can be made to collide.
inline uint64_t TextHash(std::wstring_view text) noexcept
{
    constexpr uint64_t kFactor = 0x9DDFEA08EB382D69;
    uint64_t hash = 0;
    const auto mix = [&](uint64_t unit)
    {
        const uint64_t a = (unit ^ hash) * kFactor;
        const uint64_t b = ((a >> 47) ^ a ^ hash) * kFactor;
        hash = ((b >> 47) ^ b) * kFactor;
    };

    const wchar_t* next = text.data();
    size_t left = text.size();
    for (; left >= 4; left -= 4, next += 4)
    {
        uint64_t unit;
        memcpy(&unit, next, sizeof(unit));
        mix(unit);
    }
    if (left >= 2)
    {
        uint32_t unit;
        memcpy(&unit, next, sizeof(unit));
        mix(unit);
        left -= 2;
        next += 2;
    }
    if (left != 0)
        mix(static_cast<uint16_t>(*next));
    return hash;
}

} // namespace qx
