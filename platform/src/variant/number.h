// A number on its way from one type of variant to another.
#pragma once

#include <oaidl.h>

#include <string>
#include <string_view>
#include <variant>

namespace qxplatform
{

using UInt128 = unsigned __int128;

// mantissa / 10^scale: whole numbers, currency and decimals, which lose nothing on their way. A mantissa has at most
// 96 bits, a scale is at most 28.
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
// False for a scale or sign that no number has.
bool ExactOf(const DECIMAL& value, Exact& result);
// digits * 10^exponent, rounded to what fits, half to even; false where it is too large.
bool ExactOf(std::string_view digits, long long exponent, bool negative, Exact& result);
// That many significant digits count, as those behind them are the format's and not the number's. False for what is
// too large, or no number.
bool ExactOf(double value, int significantDigits, Exact& result);

// With fewer places or more, half to even. More have to fit in 128 bits.
Exact WithScale(const Exact& number, int scale);

double DoubleOf(const Exact& number);
double DoubleOf(const Number& number);

// False where it is out of bounds.
bool CurrencyOf(const Number& number, CY& result);
bool DecimalOf(const Number& number, int significantDigits, DECIMAL& result);
// A whole number, half to even; the bounds are those of a type.
bool WholeOf(const Number& number, LONGLONG least, ULONGLONG most, LONGLONG& result);
bool IsZero(const Number& number);

// -1, 0 or 1, without loss.
int Compare(const Exact& left, const Exact& right);

// With '.' and without zeros at the end.
std::string TextOf(const Exact& number);
// As %.*G, with an exponent of two digits or more.
std::string TextOf(double value, int significantDigits);

} // namespace qxplatform
