// Text made safe inside HTML, and back, by whole characters: a surrogate pair has one reference.
#pragma once

#include "core/text/string.h"

#include <string_view>

namespace qx
{

// Uses the names of HTML 4 up to U+00FF and hexadecimal references above it. The characters U+0080 to U+009F and lone
// surrogates stay as they are, because no reference of HTML stands for them.
String EscapeHtml(std::wstring_view text);

// Resolves every character reference; see ReadHtmlReference for those of an attribute.
String UnescapeHtml(std::wstring_view text, bool inAttribute = false);

} // namespace qx
