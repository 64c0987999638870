// Parses numbers as users write them, with the symbols of their locale.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

struct NumberSymbols
{
    std::u16string decimal;
    std::u16string group;
    std::u16string currency;
};
NumberSymbols SymbolsOf(const Locale& locale);

// The parsed number: digits * 10^exponent, or the bits of "&H1F" and "&O37".
struct ReadNumber
{
    bool negative = false;
    std::string digits;
    long long exponent = 0;

    bool isBits = false;
    ULONGLONG bits = 0;
};

// Returns S_OK, DISP_E_TYPEMISMATCH if the text is not a number, or DISP_E_OVERFLOW beyond 64 bits. The number may be
// surrounded by blanks, one sign before or after it, one currency symbol, and parentheses for a negative number. Group
// separators may occur anywhere after the first digit, and an exponent at the end.
HRESULT ReadNumberText(std::u16string_view text, const NumberSymbols& symbols, ReadNumber& result);

} // namespace qxplatform
