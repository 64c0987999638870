// Decodes the character references in the head of a page.
#pragma once

#include "core/text/text_buffer.h"

#include <string_view>

namespace qx
{

// If `named`, decodes the named references of Latin-1. Then removes line ends, and decodes numeric references of 16
// bits until none are left, so a decoded character may be part of another reference. References to 0, and references
// that begin with "&#X", are removed.
TextBuffer DecodeEntities(std::wstring_view text, bool named);

} // namespace qx
