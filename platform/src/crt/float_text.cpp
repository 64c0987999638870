#include "decimal.h"
#include "number_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace qxplatform
{

namespace
{

constexpr std::size_t kDefaultPrecision = 6;

class CharBuffer
{
public:
    void Append(char c) { _text[_length++] = c; }
    std::string_view View() const { return {_text.data(), _length}; }

private:
    // Room for the digits before the point, the point, and all digits of the smallest numbers after it.
    std::array<char, 1500> _text;
    std::size_t _length = 0;
};

// Returns an exponent such as `e+004`, with at least three digits.
std::string_view ExponentText(std::array<char, 8>& buffer, char letter, int exponent)
{
    const int magnitude = exponent < 0 ? -exponent : exponent;
    buffer = {letter, exponent < 0 ? '-' : '+', static_cast<char>('0' + magnitude / 100),
        static_cast<char>('0' + magnitude / 10 % 10), static_cast<char>('0' + magnitude % 10)};
    return {buffer.data(), 5};
}

// Appends the point, if something follows it or the flags require it, and `precision` digits starting with the one at
// `index`. Zeros after the last digit are only counted.
void AppendFraction(
    CharBuffer& text, NumberText& number, const Decimal& value, long long index, std::size_t precision, bool point)
{
    if (precision != 0 || point)
        text.Append('.');
    for (; index < 0 && precision != 0; ++index, --precision)
        text.Append('0');
    for (; precision != 0 && index < static_cast<long long>(value.Count()); ++index, --precision)
        text.Append(value.Digit(static_cast<std::size_t>(index)));
    number.trailingZeros = precision;
}

void AppendFixed(BoundedText& target, const Conversion& conversion, const Decimal& value, std::size_t precision,
    std::string_view sign)
{
    CharBuffer text;
    NumberText number;
    number.prefix = sign;
    const int exponent = value.Exponent();
    if (exponent < 0)
        text.Append('0');
    for (int i = 0; i <= exponent; ++i)
        text.Append(value.Digit(static_cast<std::size_t>(i)));
    AppendFraction(text, number, value, exponent + 1LL, precision, conversion.alternate);
    number.digits = text.View();
    AppendNumber(target, conversion, number);
}

void AppendScientific(BoundedText& target, const Conversion& conversion, const Decimal& value, std::size_t precision,
    std::string_view sign, char letter)
{
    CharBuffer text;
    NumberText number;
    std::array<char, 8> exponent;
    number.prefix = sign;
    text.Append(value.Digit(0));
    AppendFraction(text, number, value, 1, precision, conversion.alternate);
    number.digits = text.View();
    number.suffix = ExponentText(exponent, letter, value.Exponent());
    AppendNumber(target, conversion, number);
}

// Appends the form with or without an exponent, as %g selects it, without trailing zeros unless the flags require them.
void AppendGeneral(BoundedText& target, const Conversion& conversion, Decimal value, std::size_t precision,
    std::string_view sign, char letter)
{
    const auto digits = static_cast<long long>(precision == 0 ? 1 : precision);
    value.Round(digits);
    if (!conversion.alternate)
        value.DropTrailingZeros();
    const long long exponent = value.Exponent();
    const long long shown = conversion.alternate ? digits : static_cast<long long>(value.Count());
    if (exponent < -4 || exponent >= digits)
        AppendScientific(target, conversion, value, static_cast<std::size_t>(shown - 1), sign, letter);
    else
        AppendFixed(target, conversion, value, static_cast<std::size_t>(std::max(shown - 1 - exponent, 0LL)), sign);
}

// Infinities and NaN are processed as if they were digits, so they are truncated and even rounded.
Decimal DigitsOf(double value)
{
    if (std::isinf(value))
        return Decimal("1#INF");
    if (!std::isnan(value))
        return Decimal(std::fabs(value));
    constexpr std::uint64_t kIndefinite = 0xFFF8000000000000;
    constexpr std::uint64_t kQuiet = 0x0008000000000000;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    if (bits == kIndefinite)
        return Decimal("1#IND");
    return Decimal(bits & kQuiet ? "1#QNAN" : "1#SNAN");
}

// Appends a number such as `0x1.8000000000000p+0`.
void AppendHexadecimal(BoundedText& target, const Conversion& conversion, double value, bool upperCase)
{
    constexpr int kMantissaDigits = 13;
    constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << (kMantissaDigits * 4);
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int storedExponent = static_cast<int>(bits >> (kMantissaDigits * 4)) & 0x7ff;
    std::uint64_t mantissa = bits & (kHiddenBit - 1);
    if (storedExponent != 0)
        mantissa |= kHiddenBit;
    int exponent = mantissa == 0 ? 0 : (storedExponent != 0 ? storedExponent : 1) - 1023;

    const std::size_t precision = conversion.precision.value_or(kMantissaDigits);
    const auto shownDigits = static_cast<int>(std::min<std::size_t>(precision, kMantissaDigits));
    const int droppedBits = (kMantissaDigits - shownDigits) * 4;
    if (droppedBits != 0)
        mantissa += std::uint64_t{1} << (droppedBits - 1);

    const char* const digits = upperCase ? "0123456789ABCDEF" : "0123456789abcdef";
    CharBuffer text;
    text.Append(digits[mantissa / kHiddenBit]);
    if (precision != 0 || conversion.alternate)
        text.Append('.');
    for (int i = 1; i <= shownDigits; ++i)
        text.Append(digits[(mantissa >> ((kMantissaDigits - i) * 4)) & 0xf]);

    CharBuffer prefix, suffix;
    for (const char c : SignText(conversion, std::signbit(value)))
        prefix.Append(c);
    prefix.Append('0');
    prefix.Append(upperCase ? 'X' : 'x');
    suffix.Append(upperCase ? 'P' : 'p');
    suffix.Append(exponent < 0 ? '-' : '+');
    exponent = exponent < 0 ? -exponent : exponent;
    for (int unit = exponent >= 1000 ? 1000 : exponent >= 100 ? 100 : exponent >= 10 ? 10 : 1; unit != 0; unit /= 10)
        suffix.Append(static_cast<char>('0' + exponent / unit % 10));

    AppendNumber(target, conversion,
        {prefix.View(), 0, text.View(), precision - static_cast<std::size_t>(shownDigits), suffix.View()});
}

} // namespace

void AppendFloat(BoundedText& target, const Conversion& conversion, double value)
{
    const bool upperCase = conversion.letter < L'a';
    if ((conversion.letter == L'a' || conversion.letter == L'A') && std::isfinite(value))
        return AppendHexadecimal(target, conversion, value, upperCase);

    Decimal decimal = DigitsOf(value);
    const std::string_view sign = SignText(conversion, std::signbit(value));
    const std::size_t precision = conversion.precision.value_or(kDefaultPrecision);
    const auto places = static_cast<long long>(precision);
    switch (conversion.letter)
    {
    case L'e':
    case L'E':
        decimal.Round(1 + places);
        return AppendScientific(target, conversion, decimal, precision, sign, upperCase ? 'E' : 'e');
    case L'f':
        decimal.Round(decimal.Exponent() + 1LL + places);
        return AppendFixed(target, conversion, decimal, precision, sign);
    default:
        return AppendGeneral(target, conversion, decimal, precision, sign, upperCase ? 'E' : 'e');
    }
}

} // namespace qxplatform
