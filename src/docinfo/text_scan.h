// Searches text without regular expressions, whose time may grow with the square of a hostile text's length. Case is
// ignored for A to Z only, and \s means the six ASCII characters, as in the patterns that these scanners replace.
#pragma once

#include "core/text/string.h"
#include "core/text/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

constexpr std::size_t kNotFound = std::wstring_view::npos;

constexpr wchar_t LowerASCII(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

constexpr bool IsLetterASCII(wchar_t c)
{
    return LowerASCII(c) >= L'a' && LowerASCII(c) <= L'z';
}

constexpr bool IsDigitASCII(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// Returns the value of a hexadecimal digit, or -1.
constexpr int HexDigit(wchar_t c)
{
    if (IsDigitASCII(c))
        return c - L'0';
    const wchar_t lower = LowerASCII(c);
    return lower >= L'a' && lower <= L'f' ? lower - L'a' + 10 : -1;
}

constexpr bool IsSpaceASCII(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

// Returns true if the text contains the lower-case literal at a position.
bool StandsAt(std::wstring_view text, std::size_t position, std::wstring_view literal);

// Returns the position of the lower-case literal, or kNotFound. The literal begins with a character that is no letter.
std::size_t FindIgnoringCase(std::wstring_view text, std::wstring_view literal, std::size_t from);

// Returns the position of the first character that is no white space.
std::size_t SkipSpace(std::wstring_view text, std::size_t from);

// Removes all occurrences of `piece` that start at `from` or later.
void RemoveAll(TextBuffer& text, std::wstring_view piece, std::size_t from);

// Returns the value of decimal digits, limited to 32 bits.
std::uint32_t DecimalNumber(std::wstring_view digits);

// Removes carriage returns and line feeds.
void RemoveLineEnds(TextBuffer& text);

} // namespace qx
