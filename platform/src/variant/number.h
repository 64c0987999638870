// A number during the conversion from one variant type to another.
#pragma once

#include <oaidl.h>

#include <string>
#include <string_view>
#include <variant>

namespace qxplatform
{

using UInt128 = unsigned __int128;

// The number mantissa / 10^scale. Integers, currency and decimals are converted to it without loss. A mantissa has at
// most 96 bits, a scale is at most 28.
struct Exact
{
    UInt128 mantissa = 0;
    int scale = 0;
    bool negative = false;
};

inline constexpr UInt128 kMaxMantissa = (UInt128{1} << 96) - 1;
inline constexpr int kMaxScale = 28;
inline constexpr int kCurrencyScale = 4;

using Number = std::variant<Exact, double>;

Exact ExactOf(LONGLONG value);
Exact ExactOf(ULONGLONG value);
Exact ExactOf(CY value);
// Returns false if scale or sign is invalid.
bool ExactOf(const DECIMAL& value, Exact& result);
// Stores digits * 10^exponent, rounded half to even to the digits that fit. Returns false if the number is too large.
bool ExactOf(std::string_view digits, long long exponent, bool negative, Exact& result);
// Uses only `significantDigits` digits; those after them are artefacts of the binary format. Returns false if the value
// is too large or not a number.
bool ExactOf(double value, int significantDigits, Exact& result);

// Changes the number of decimal places, rounding half to even. The result must fit in 128 bits.
Exact WithScale(const Exact& number, int scale);

double DoubleOf(const Exact& number);
double DoubleOf(const Number& number);

// Return false if the number is out of range.
bool CurrencyOf(const Number& number, CY& result);
bool DecimalOf(const Number& number, int significantDigits, DECIMAL& result);
// Rounds to an integer, half to even, within the range of a type.
bool WholeOf(const Number& number, LONGLONG least, ULONGLONG most, LONGLONG& result);
bool IsZero(const Number& number);

// Returns -1, 0 or 1. The comparison is exact.
int Compare(const Exact& left, const Exact& right);

// Writes the number with '.' as the decimal point and without trailing zeros.
std::string TextOf(const Exact& number);
// Writes the number like %.*G, with an exponent of at least two digits.
std::string TextOf(double value, int significantDigits);

} // namespace qxplatform
