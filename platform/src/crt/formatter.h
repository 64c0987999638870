// The wide formatter in the Microsoft dialect.
#pragma once

#include "bounded_text.h"
#include "conversion.h"

namespace qxplatform
{

// `%s` and `%c` are wide, `%S`, `%C` and conversions with `h` narrow; `l` means 32 bits, `ll`, `I64` and `I` 64 bits.
// Exponents have three digits, and the decimal separator is a point. Unknown conversions are copied unchanged.
void Format(BoundedText& target, const wchar_t* format, Arguments& arguments);

} // namespace qxplatform
