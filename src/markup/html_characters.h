// Classes of characters in HTML syntax, in which only ASCII characters are letters.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qx
{

constexpr bool IsHtmlSpace(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\f' || c == L'\r';
}

constexpr bool IsHtmlDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

constexpr bool IsHtmlLetter(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

constexpr wchar_t LowerHtmlLetter(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

// Returns the position of the first `c` from `start` on, or the length of the text if there is none. Examines four
// characters at a time, because most of a page is long runs of text between tags.
inline std::size_t FindHtmlCharacter(std::wstring_view text, wchar_t c, std::size_t start)
{
    constexpr std::uint64_t kOnes = 0x0001000100010001u;
    constexpr std::uint64_t kHighBits = 0x8000800080008000u;
    const std::uint64_t wanted = kOnes * c;
    for (; text.size() - start >= 4; start += 4)
    {
        std::uint64_t units;
        std::memcpy(&units, text.data() + start, sizeof units);
        units ^= wanted;
        if (((units - kOnes) & ~units & kHighBits) != 0) // one of them is zero
            break;
    }
    while (start != text.size() && text[start] != c)
        ++start;
    return start;
}

// Compares two texts, ignoring the case of A to Z.
constexpr bool EqualsHtmlName(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](wchar_t c, wchar_t d) { return LowerHtmlLetter(c) == LowerHtmlLetter(d); });
}

} // namespace qx
