// The guess of a GDI charset from the letters of a text.
#pragma once

#include <cstdint>

namespace qx
{

// ANSI_CHARSET for text without letters that tell a script; the script's charset if all of them tell the same; and
// where several meet, or an ideograph stands, what `codePage` suggests. Null counts as empty.
std::uint32_t LikelyCharset(const wchar_t* text, std::uint32_t codePage);

} // namespace qx
