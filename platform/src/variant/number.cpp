#include "variant/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace qxplatform
{

namespace
{

// 29 digits have a scale of at most 28 and always fit in 128 bits.
constexpr std::size_t kMostDigits = 29;

UInt128 PowerOf10(int exponent)
{
    UInt128 power = 1;
    for (; exponent > 0; --exponent)
        power *= 10;
    return power;
}

UInt128 DivideToEven(UInt128 value, UInt128 divisor)
{
    const UInt128 quotient = value / divisor;
    const UInt128 rest = value % divisor;
    const bool up = rest > divisor - rest || (rest == divisor - rest && quotient % 2 != 0);
    return quotient + up;
}

// Returns the first `kept` digits, rounded according to the remaining ones.
UInt128 Rounded(std::string_view digits, std::size_t kept)
{
    UInt128 value = 0;
    for (const char digit : digits.substr(0, kept))
        value = value * 10 + static_cast<unsigned>(digit - '0');
    const std::string_view rest = digits.substr(std::min(kept, digits.size()));
    if (rest.empty() || rest.front() < '5')
        return value;
    const bool half = rest.front() == '5' && rest.find_first_not_of('0', 1) == rest.npos;
    return value + (!half || value % 2 != 0);
}

std::string_view WithoutZeros(std::string_view digits, long long& exponent)
{
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    const std::size_t end = digits.find_last_not_of('0') + 1;
    exponent += static_cast<long long>(digits.size() - end);
    return digits.substr(0, end);
}

std::string DigitsOf(UInt128 value)
{
    std::string digits;
    do
        digits += static_cast<char>('0' + static_cast<int>(value % 10));
    while ((value /= 10) != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

// Digits and exponent as written by the formatter: d.ddde+dd.
using ScientificText = std::array<char, 40>;
std::string_view Scientific(ScientificText& buffer, double value, int significantDigits)
{
    const auto end = std::to_chars(
        buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::scientific, significantDigits - 1);
    return {buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data())};
}

} // namespace

Exact ExactOf(LONGLONG value)
{
    const auto bits = static_cast<ULONGLONG>(value);
    return {value < 0 ? 0 - bits : bits, 0, value < 0};
}

Exact ExactOf(ULONGLONG value)
{
    return {value, 0, false};
}

Exact ExactOf(CY value)
{
    Exact number = ExactOf(value.int64);
    number.scale = kCurrencyScale;
    return number;
}

bool ExactOf(const DECIMAL& value, Exact& result)
{
    if (value.scale > kMaxScale || (value.sign != 0 && value.sign != DECIMAL_NEG))
        return false;
    result = {UInt128{value.Hi32} << 64 | value.Lo64, value.scale, value.sign != 0};
    return true;
}

bool ExactOf(std::string_view digits, long long exponent, bool negative, Exact& result)
{
    digits = WithoutZeros(digits, exponent);
    result = {0, 0, negative};
    if (digits.empty())
        return true;
    const auto count = static_cast<long long>(digits.size());
    if (count + exponent > static_cast<long long>(kMostDigits))
        return false;
    if (exponent > 0)
    {
        result.mantissa = Rounded(digits, digits.size()) * PowerOf10(static_cast<int>(exponent));
        return result.mantissa <= kMaxMantissa;
    }
    // Keep all decimal places if possible, otherwise as many as the scale and the mantissa permit.
    for (long long scale = std::min<long long>(-exponent, kMaxScale); scale >= 0; --scale)
    {
        const long long kept = count + exponent + scale;
        if (kept > static_cast<long long>(kMostDigits))
            continue;
        const UInt128 mantissa = kept >= 0 ? Rounded(digits, static_cast<std::size_t>(kept)) : 0;
        if (mantissa <= kMaxMantissa)
        {
            result.mantissa = mantissa;
            result.scale = mantissa != 0 ? static_cast<int>(scale) : 0;
            return true;
        }
    }
    return false;
}

bool ExactOf(double value, int significantDigits, Exact& result)
{
    if (!std::isfinite(value))
        return false;
    ScientificText buffer;
    const std::string_view text = Scientific(buffer, std::fabs(value), significantDigits);
    std::string digits(text.substr(0, text.find('e')));
    digits.erase(1, 1); // the point
    int exponent = 0;
    const std::string_view exponentText = text.substr(text.find('e') + 1);
    std::from_chars(exponentText.data() + (exponentText.front() == '+'), text.data() + text.size(), exponent);
    return ExactOf(digits, exponent - (significantDigits - 1), value < 0, result);
}

Exact WithScale(const Exact& number, int scale)
{
    Exact result = number;
    result.scale = scale;
    if (scale < number.scale)
        result.mantissa = DivideToEven(number.mantissa, PowerOf10(number.scale - scale));
    else
        result.mantissa *= PowerOf10(scale - number.scale);
    return result;
}

double DoubleOf(const Exact& number)
{
    const std::string text = DigitsOf(number.mantissa) + "e-" + std::to_string(number.scale);
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return number.negative ? -value : value;
}

double DoubleOf(const Number& number)
{
    const auto* const exact = std::get_if<Exact>(&number);
    return exact != nullptr ? DoubleOf(*exact) : std::get<double>(number);
}

bool WholeOf(const Number& number, LONGLONG least, ULONGLONG most, LONGLONG& result)
{
    Exact whole;
    if (const auto* const exact = std::get_if<Exact>(&number))
        whole = WithScale(*exact, 0);
    else
    {
        constexpr double kBeyond64Bits = 18446744073709551616.0;
        const double rounded = std::nearbyint(std::get<double>(number));
        if (!(std::fabs(rounded) < kBeyond64Bits))
            return false;
        whole = {static_cast<UInt128>(std::fabs(rounded)), 0, rounded < 0};
    }
    const UInt128 limit = whole.negative ? ExactOf(least).mantissa : UInt128{most};
    if (whole.negative && least >= 0 ? whole.mantissa != 0 : whole.mantissa > limit)
        return false;
    const auto bits = static_cast<ULONGLONG>(whole.mantissa);
    result = static_cast<LONGLONG>(whole.negative ? 0 - bits : bits);
    return true;
}

bool CurrencyOf(const Number& number, CY& result)
{
    Number scaled;
    if (const auto* const exact = std::get_if<Exact>(&number))
    {
        // Larger values are out of range anyway and would overflow in the multiplication.
        Exact shifted = *exact;
        if (shifted.mantissa / PowerOf10(shifted.scale) > std::numeric_limits<ULONGLONG>::max())
            return false;
        shifted = WithScale(shifted, kCurrencyScale);
        shifted.scale = 0;
        scaled = shifted;
    }
    else
        scaled = std::get<double>(number) * 10'000;
    return WholeOf(scaled, std::numeric_limits<LONGLONG>::min(), std::numeric_limits<LONGLONG>::max(), result.int64);
}

bool DecimalOf(const Number& number, int significantDigits, DECIMAL& result)
{
    Exact value;
    if (const auto* const exact = std::get_if<Exact>(&number))
        value = *exact;
    else if (!ExactOf(std::get<double>(number), significantDigits, value))
        return false;
    result.scale = static_cast<BYTE>(value.scale);
    result.sign = value.negative && value.mantissa != 0 ? DECIMAL_NEG : BYTE{0};
    result.Hi32 = static_cast<ULONG>(value.mantissa >> 64);
    result.Lo64 = static_cast<ULONGLONG>(value.mantissa);
    return true;
}

bool IsZero(const Number& number)
{
    const auto* const exact = std::get_if<Exact>(&number);
    return exact != nullptr ? exact->mantissa == 0 : std::get<double>(number) == 0;
}

int Compare(const Exact& left, const Exact& right)
{
    if (left.mantissa == 0 && right.mantissa == 0)
        return 0;
    if (left.negative != right.negative)
        return left.negative ? -1 : 1;
    // Compare integer parts first, then fractions with the same number of places. Neither exceeds 128 bits.
    const UInt128 leftUnit = PowerOf10(left.scale);
    const UInt128 rightUnit = PowerOf10(right.scale);
    UInt128 leftPart = left.mantissa / leftUnit;
    UInt128 rightPart = right.mantissa / rightUnit;
    if (leftPart == rightPart)
    {
        leftPart = left.mantissa % leftUnit * PowerOf10(kMaxScale - left.scale);
        rightPart = right.mantissa % rightUnit * PowerOf10(kMaxScale - right.scale);
    }
    const int order = leftPart < rightPart ? -1 : leftPart > rightPart;
    return left.negative ? -order : order;
}

std::string TextOf(const Exact& number)
{
    std::string text = DigitsOf(number.mantissa);
    const auto scale = static_cast<std::size_t>(number.scale);
    if (text.size() <= scale)
        text.insert(0, scale + 1 - text.size(), '0');
    if (scale != 0)
    {
        text.insert(text.size() - scale, 1, '.');
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return number.negative && number.mantissa != 0 ? '-' + text : text;
}

std::string TextOf(double value, int significantDigits)
{
    if (std::isnan(value))
        return std::signbit(value) ? "-1.#IND" : "1.#QNAN";
    if (std::isinf(value))
        return value < 0 ? "-1.#INF" : "1.#INF";
    if (value == 0) // including negative zero
        return "0";
    ScientificText buffer;
    const auto end = std::to_chars(
        buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, significantDigits);
    std::string text(buffer.data(), end.ptr);
    std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
}

} // namespace qxplatform
