// Masking of characters that have a meaning in the XML forms.
#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <string_view>

namespace qx
{

// A line break of any form is masked as one sequence, which is unmasked to CR LF. Tabs and the five markup characters
// have named sequences; other control characters are written with four hexadecimal digits.
class clsProfMask
{
public:
    // Returns the length of the masked text without creating it.
    static std::size_t MaskedLength(std::wstring_view text);

    // Returns the argument itself, sharing its buffer, if there is nothing to mask.
    static String Mask(const String& text);

    // Writes the masked text, MaskedLength characters without a terminator, and returns its end.
    static wchar_t* Mask(wchar_t* out, std::wstring_view text);

    // Unmasks in place, which works because no sequence is shorter than the text it represents. Returns the new length.
    // Unknown and unfinished sequences are kept. Numbers are reduced to their lowest 16 bits; sequences that would
    // become a zero are kept.
    static std::size_t Unmask(wchar_t* text, std::size_t length);
};

} // namespace qx
