// Converts plain text to HTML paragraphs.
#pragma once

#include "core/text/string.h"

namespace qx
{

// With `placeholders` the tags are written as "[_[p]_]" and "[_[/p]_]", for callers that replace them with real tags
// later.
String TextToHtml(const wchar_t* text, bool placeholders);

} // namespace qx
