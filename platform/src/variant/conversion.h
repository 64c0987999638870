// Conversion between variants and numbers, used for type changes and comparison.
#pragma once

#include <oaidl.h>

#include "variant/number.h"

namespace qxplatform
{

// The number of digits that floating-point numbers reliably have; used for text and decimals.
inline constexpr int kSingleDigits = 7;
inline constexpr int kDoubleDigits = 15;

// Returns S_OK; DISP_E_TYPEMISMATCH if the value is not a number (VT_EMPTY counts as 0); E_INVALIDARG for a malformed
// decimal.
HRESULT NumberOf(const VARIANT& value, Number& number);

// Returns S_OK, DISP_E_OVERFLOW, or DISP_E_TYPEMISMATCH if the type is not numeric. `singlePrecision` says that the
// number comes from a single.
HRESULT SetNumber(VARIANT& target, VARTYPE type, const Number& number, bool singlePrecision);

// Stores the lowest bytes of a value, as many as the target's type has.
void SetBits(VARIANT& target, VARTYPE type, LONGLONG bits);

// Returns true if the date is in the years 100 to 9999.
bool IsDate(double date);

} // namespace qxplatform
