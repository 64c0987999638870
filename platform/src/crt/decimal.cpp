#include "decimal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>

namespace qxplatform
{

namespace
{

// Returns the number of decimal digits after the point, which equals the number of binary digits there.
int FractionDigits(double value)
{
    constexpr int kMantissaBits = 52;
    constexpr int kBias = 1023;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int storedExponent = static_cast<int>(bits >> kMantissaBits);
    std::uint64_t mantissa = bits & ((std::uint64_t{1} << kMantissaBits) - 1);
    if (storedExponent != 0)
        mantissa |= std::uint64_t{1} << kMantissaBits;
    if (mantissa == 0)
        return 0;
    const int lowestBit =
        (storedExponent != 0 ? storedExponent : 1) - kBias - kMantissaBits + std::countr_zero(mantissa);
    return lowestBit < 0 ? -lowestBit : 0;
}

} // namespace

Decimal::Decimal(double value)
{
    char* const begin = _digits.data();
    const auto printed =
        std::to_chars(begin, begin + _digits.size(), value, std::chars_format::fixed, FractionDigits(value));
    const std::string_view text(begin, static_cast<std::size_t>(printed.ptr - begin));

    const std::size_t integerDigits = std::min(text.find('.'), text.size());
    std::size_t first = 0;
    while (first < text.size() && (text[first] == '0' || text[first] == '.'))
        ++first;
    if (first == text.size())
    {
        _digits[0] = '0';
        _count = 1;
        return;
    }
    _exponent =
        first < integerDigits ? static_cast<int>(integerDigits - first) - 1 : -static_cast<int>(first - integerDigits);
    for (const char c : text.substr(first))
        if (c != '.')
            _digits[_count++] = c;
}

Decimal::Decimal(std::string_view digits)
{
    _count = digits.copy(_digits.data(), _digits.size());
}

void Decimal::Round(long long digits)
{
    if (digits >= static_cast<long long>(_count))
        return;
    const bool up = digits >= 0 && _digits[static_cast<std::size_t>(digits)] >= '5';
    _count = digits > 0 ? static_cast<std::size_t>(digits) : 0;
    if (up)
        CarryUp();
    else if (_count == 0)
    {
        _digits[0] = '0';
        _count = 1;
        _exponent = 0;
    }
}

void Decimal::CarryUp()
{
    for (; _count != 0; --_count)
        if (_digits[_count - 1] != '9')
        {
            ++_digits[_count - 1];
            return;
        }
    _digits[0] = '1';
    _count = 1;
    ++_exponent;
}

void Decimal::DropTrailingZeros()
{
    while (_count > 1 && _digits[_count - 1] == '0')
        --_count;
}

} // namespace qxplatform
