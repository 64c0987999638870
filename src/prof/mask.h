// The masking of characters that the XML forms give a meaning.
#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <string_view>

namespace qx
{

// A line break, in whatever form, is masked as one sequence that comes back as CR LF; tabs and the five characters of
// the markup have names, other characters below the blank four hex digits.
class clsProfMask
{
public:
    // The length of the masked text, without making it.
    static std::size_t MaskedLength(std::wstring_view text);

    // Shared with the argument if there's nothing to mask.
    static String Mask(const String& text);

    // Writes the masked text, MaskedLength characters without a terminator, and gives its end.
    static wchar_t* Mask(wchar_t* out, std::wstring_view text);

    // Works in place, since no sequence is shorter than what it stands for; gives the new length. Unknown sequences and
    // those without an end stay as they are. Of a number the lowest 16 bits count; one that would give a zero stays.
    static std::size_t Unmask(wchar_t* text, std::size_t length);
};

} // namespace qx
