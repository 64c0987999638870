// Decodes Punycode (RFC 3492), the form of international domain names in mail addresses.
#pragma once

#include "core/text/text_buffer.h"

#include <optional>
#include <string_view>

namespace qx
{

// Decodes a label without its "xn--". Returns nothing if the label isn't valid or contains a character that isn't in
// Unicode.
std::optional<TextBuffer> DecodePunycode(std::wstring_view label);

} // namespace qx
