// The formatter of wide text in the Microsoft dialect.
#pragma once

#include "bounded_text.h"
#include "conversion.h"

namespace qxplatform
{

// `%s` and `%c` are wide, `%S`, `%C` and what follows `h` narrow; `l` means 32 bits, `ll`, `I64` and `I` 64. Exponents
// have three digits, numbers the decimal point. What isn't known as a conversion is written as it is.
void Format(BoundedText& target, const wchar_t* format, Arguments& arguments);

} // namespace qxplatform
