// Guesses a GDI charset from the letters of a text.
#pragma once

#include <cstdint>

namespace qx
{

// Returns ANSI_CHARSET if no letter identifies a script, or the charset of the script if all identifying letters agree.
// If the letters belong to several scripts, or one is an ideograph, `codePage` determines the charset. Null counts as
// empty.
std::uint32_t LikelyCharset(const wchar_t* text, std::uint32_t codePage);

} // namespace qx
