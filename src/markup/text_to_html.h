// Plain text as a run of HTML paragraphs.
#pragma once

#include "core/text/string.h"

namespace qx
{

// With `placeholders` the tags are written as "[_[p]_]" and "[_[/p]_]", for callers that make the real ones later.
String TextToHtml(const wchar_t* text, bool placeholders);

} // namespace qx
