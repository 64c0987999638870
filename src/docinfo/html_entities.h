// Character references in the head of a page.
#pragma once

#include "core/text/text_buffer.h"

#include <string_view>

namespace qx
{

// Decodes the Latin-1 set of named references if `named`, removes line ends, then decodes numeric references of 16 bits
// until there are none left, so that a decoded reference may be part of another one. A reference to 0, and one that
// begins with "&#X", vanishes.
TextBuffer DecodeEntities(std::wstring_view text, bool named);

} // namespace qx
