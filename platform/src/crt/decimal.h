// All decimal digits of a floating-point number.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qxplatform
{

// The number d.ddd * 10^exponent. All digits after the stored ones are 0.
class Decimal
{
public:
    // Converts a finite number that is not negative to its exact value.
    explicit Decimal(double value);
    // Treats these characters as if they were digits.
    explicit Decimal(std::string_view digits);

    std::size_t Count() const { return _count; }
    int Exponent() const { return _exponent; }
    char Digit(std::size_t index) const { return index < _count ? _digits[index] : '0'; }

    // Keeps `digits` digits and rounds half up. If `digits` is 0 or less, the result is 0 or, if rounded up, a
    // single digit 1.
    void Round(long long digits);
    void DropTrailingZeros();

private:
    void CarryUp();

    // The smallest numbers have 1074 digits after the point.
    std::array<char, 1100> _digits;
    std::size_t _count = 0;
    int _exponent = 0;
};

} // namespace qxplatform
