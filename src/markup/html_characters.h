// Classes of characters in HTML syntax, which knows only ASCII letters.
#pragma once

#include <algorithm>
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

// Compares two texts, ignoring the case of A to Z.
constexpr bool EqualsHtmlName(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](wchar_t c, wchar_t d) { return LowerHtmlLetter(c) == LowerHtmlLetter(d); });
}

} // namespace qx
