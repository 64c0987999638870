// Values of variants as numbers and back, for those who change types or compare.
#pragma once

#include <oaidl.h>

#include "variant/number.h"

namespace qxplatform
{

// Floating-point numbers are shown, and made decimal, with the digits that they surely have.
inline constexpr int kSingleDigits = 7;
inline constexpr int kDoubleDigits = 15;

// S_OK; DISP_E_TYPEMISMATCH for what is no number (nothing at all is 0); E_INVALIDARG for a malformed decimal.
HRESULT NumberOf(const VARIANT& value, Number& number);

// S_OK, DISP_E_OVERFLOW, or DISP_E_TYPEMISMATCH for a type that is no number's. `singlePrecision` tells where the
// number comes from.
HRESULT SetNumber(VARIANT& target, VARTYPE type, const Number& number, bool singlePrecision);

// The lowest bytes of a value that has the target's size.
void SetBits(VARIANT& target, VARTYPE type, LONGLONG bits);

// Whether a date can be told as a day of the years 100 to 9999.
bool IsDate(double date);

} // namespace qxplatform
