// Surrogates: the pairs of UTF-16 units for the characters beyond U+FFFF.
#pragma once

#include <cstdint>

namespace qx
{

constexpr bool IsHighSurrogate(wchar_t c)
{
    return c >= 0xD800 && c < 0xDC00;
}

constexpr bool IsLowSurrogate(wchar_t c)
{
    return c >= 0xDC00 && c < 0xE000;
}

constexpr std::uint32_t CodePointOf(wchar_t high, wchar_t low)
{
    return 0x10000 + (static_cast<std::uint32_t>(high - 0xD800) << 10) + static_cast<std::uint32_t>(low - 0xDC00);
}

} // namespace qx
