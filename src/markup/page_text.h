// The text of an HTML page as its reader sees it.
#pragma once

#include "core/text/string.h"

#include <string_view>

namespace qx
{

// Lines end with line feeds. With `showsLinks` the text of a link is followed by its target in brackets. Time is linear
// in the length of the page; nesting of any depth takes no more memory.
String PageText(std::wstring_view html, bool showsLinks);

} // namespace qx
