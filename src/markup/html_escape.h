// Masks text for HTML and unmasks it, by whole characters: a surrogate pair becomes one reference.
#pragma once

#include "core/text/string.h"

#include <string_view>

namespace qx
{

// Uses the names of HTML 4 up to U+00FF and hexadecimal references above it. The characters U+0080 to U+009F and
// unpaired surrogates are copied, because HTML has no reference for them.
String EscapeHtml(std::wstring_view text);

// Resolves every character reference; see ReadHtmlReference for `inAttribute`.
String UnescapeHtml(std::wstring_view text, bool inAttribute = false);

} // namespace qx
