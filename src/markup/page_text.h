// Converts HTML pages to the text that a reader sees.
#pragma once

#include "core/text/string.h"

#include <string_view>

namespace qx
{

// Lines are separated by line feeds. With `showsLinks` the text of a link is followed by its target in brackets. Runs
// in linear time; the depth of nesting does not affect the memory it needs.
String PageText(std::wstring_view html, bool showsLinks);

} // namespace qx
