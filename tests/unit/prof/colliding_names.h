// Texts that the hash of the library doesn't tell apart, as a hostile file could hold them.
#pragma once

#include "core/string.h"
#include "core/text_hash.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace qxtest
{

// The unit that takes the hash from one state to another: each step of the hash can be turned round.
inline uint64_t UnitBetween(uint64_t from, uint64_t to)
{
    constexpr uint64_t kFactor = 0x9DDFEA08EB382D69;
    uint64_t inverse = kFactor; // each round doubles the bits that are right
    for (int round = 0; round < 6; ++round)
        inverse *= 2 - kFactor * inverse;
    const auto unshift = [](uint64_t mixed)
    {
        return mixed ^ (mixed >> 47);
    };
    const uint64_t b = unshift(to * inverse);
    const uint64_t a = unshift((b * inverse) ^ from);
    return (a * inverse) ^ from;
}

// Of 8 characters each, without zeros and slashes.
inline std::vector<qx::String> CollidingNames(size_t count)
{
    std::vector<qx::String> names;
    for (wchar_t i = 1; names.size() < count; ++i)
    {
        wchar_t text[9] = {L'n', L'a', L'm', i};
        const uint64_t unit = UnitBetween(qx::TextHash({text, 4}), 0x0123456789ABCDEF);
        memcpy(text + 4, &unit, sizeof(unit));
        if (wcslen(text) == 8 && wcschr(text, L'/') == nullptr)
            names.emplace_back(text);
    }
    return names;
}

} // namespace qxtest
