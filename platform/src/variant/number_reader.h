// Numbers as people write them, in the signs of their locale.
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

// What a text says: digits * 10^exponent, or the bits of "&H1F" and "&O37".
struct ReadNumber
{
    bool negative = false;
    std::string digits;
    long long exponent = 0;

    bool isBits = false;
    ULONGLONG bits = 0;
};

// S_OK, DISP_E_TYPEMISMATCH for what is no number, DISP_E_OVERFLOW for more than 64 bits. Around the number may stand
// blanks, one sign before or behind it, one currency symbol, brackets for a negative number; group separators may stand
// anywhere behind the first digit, and an exponent at the end.
HRESULT ReadNumberText(std::u16string_view text, const NumberSymbols& symbols, ReadNumber& result);

} // namespace qxplatform
