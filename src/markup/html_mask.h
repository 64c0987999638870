// Masks text for HTML and unmasks it, one 16-bit unit at a time: each half of a surrogate pair gets its own reference.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

String MaskHtml(const wchar_t* text);
String DemaskHtml(const wchar_t* text);

// Unmasks in place. Returns the new length, which never exceeds the old one. The text must be zero-terminated, and
// stays so.
std::size_t DemaskHtmlInPlace(wchar_t* text, std::size_t length);

} // namespace qx
