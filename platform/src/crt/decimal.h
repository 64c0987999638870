// The decimal digits of a floating-point number, all of them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qxplatform
{

// d.ddd * 10^exponent. Behind the last digit stand zeros.
class Decimal
{
public:
    // The exact value of a finite number of at least 0.
    explicit Decimal(double value);
    // Something that is treated as if it were digits.
    explicit Decimal(std::string_view digits);

    std::size_t Count() const { return _count; }
    int Exponent() const { return _exponent; }
    char Digit(std::size_t index) const { return index < _count ? _digits[index] : '0'; }

    // Keeps that many digits, half upwards; with 0 or fewer, what is left is 0 or the 1 that rounding gave.
    void Round(long long digits);
    void DropTrailingZeros();

private:
    void CarryUp();

    // The smallest numbers have 1074 digits behind the point.
    std::array<char, 1100> _digits;
    std::size_t _count = 0;
    int _exponent = 0;
};

} // namespace qxplatform
