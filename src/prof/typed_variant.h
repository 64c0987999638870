// Variants as the text of a value: "var://" and their packed bytes.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <oleauto.h>

#include <string_view>

namespace qx
{

// Compressed from 101 bytes on.
String VariantToText(const VARIANT& value);

// Into a variant of the caller's. A text of no variant becomes a VT_BSTR, an empty one, and one that can't be unpacked,
// VT_EMPTY as far as the system makes that of what the variant holds.
void VariantFromText(std::wstring_view text, VARIANT& value);

} // namespace qx
