// Text made safe inside HTML, and back, one 16-bit unit at a time: each half of a surrogate pair has a reference of its
// own.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

String MaskHtml(const wchar_t* text);
String DemaskHtml(const wchar_t* text);

// In place; gives the new length, which is never above the old one. The text ends with a zero before and afterwards.
std::size_t DemaskHtmlInPlace(wchar_t* text, std::size_t length);

} // namespace qx
