// Variants stored as text: the prefix "var://", followed by the packed bytes of the variant.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <oleauto.h>

#include <string_view>

namespace qx
{

// Compresses variants of more than 100 bytes.
String VariantToText(const VARIANT& value);

// Stores the value in `value`, which must be an initialised variant. Text that isn't a variant becomes a VT_BSTR. An
// empty text, and a variant that can't be unpacked, become VT_EMPTY if the system can convert the old contents of
// `value`.
void VariantFromText(std::wstring_view text, VARIANT& value);

} // namespace qx
