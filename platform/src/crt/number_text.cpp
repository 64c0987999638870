#include "number_text.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace qxplatform
{

namespace
{

using DigitBuffer = std::array<char, 24>; // 64 bits have 22 octal digits

std::string_view Digits(DigitBuffer& buffer, std::uint64_t value, int base, bool upperCase)
{
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base).ptr;
    if (upperCase)
        for (char* digit = buffer.data(); digit != end; ++digit)
            if (*digit >= 'a')
                *digit = static_cast<char>(*digit - ('a' - 'A'));
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

// Extends the digits to the precision, which is their minimum number. With precision 0 the number 0 has no digits. A
// precision disables zero padding.
void AppendInteger(BoundedText& target, Conversion conversion, std::uint64_t value, NumberText number)
{
    if (conversion.precision)
    {
        conversion.zero = false;
        if (value == 0 && *conversion.precision == 0)
            number.digits = {};
        if (number.digits.size() < *conversion.precision)
            number.leadingZeros = *conversion.precision - number.digits.size();
    }
    const bool octalMark = conversion.letter == L'o' && conversion.alternate;
    if (octalMark && number.leadingZeros == 0 && !number.digits.starts_with('0'))
        number.leadingZeros = 1;
    AppendNumber(target, conversion, number);
}

} // namespace

std::string_view SignText(const Conversion& conversion, bool negative)
{
    if (negative)
        return "-";
    if (conversion.plus)
        return "+";
    return conversion.blank ? " " : "";
}

void AppendNumber(BoundedText& target, const Conversion& conversion, const NumberText& number)
{
    const std::size_t length =
        number.prefix.size() + number.leadingZeros + number.digits.size() + number.trailingZeros + number.suffix.size();
    const std::size_t fill = conversion.width > length ? conversion.width - length : 0;
    const bool zeros = conversion.zero && !conversion.left;

    if (!conversion.left && !zeros)
        target.Fill(L' ', fill);
    target.Append(number.prefix);
    if (zeros)
        target.Fill(L'0', fill);
    target.Fill(L'0', number.leadingZeros);
    target.Append(number.digits);
    target.Fill(L'0', number.trailingZeros);
    target.Append(number.suffix);
    if (conversion.left)
        target.Fill(L' ', fill);
}

void AppendSigned(BoundedText& target, const Conversion& conversion, std::int64_t value)
{
    DigitBuffer buffer;
    const auto bits = static_cast<std::uint64_t>(value);
    const std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
    NumberText number;
    number.prefix = SignText(conversion, value < 0);
    number.digits = Digits(buffer, magnitude, 10, false);
    AppendInteger(target, conversion, magnitude, number);
}

void AppendUnsigned(BoundedText& target, const Conversion& conversion, std::uint64_t value)
{
    DigitBuffer buffer;
    NumberText number;
    switch (conversion.letter)
    {
    case L'o':
        number.digits = Digits(buffer, value, 8, false);
        break;
    case L'x':
    case L'X':
    {
        const bool upperCase = conversion.letter == L'X';
        if (conversion.alternate && value != 0)
            number.prefix = upperCase ? "0X" : "0x";
        number.digits = Digits(buffer, value, 16, upperCase);
        break;
    }
    default:
        number.digits = Digits(buffer, value, 10, false);
    }
    AppendInteger(target, conversion, value, number);
}

void AppendPointer(BoundedText& target, const Conversion& conversion, const void* pointer)
{
    Conversion hexadecimal = conversion;
    hexadecimal.letter = L'X';
    hexadecimal.precision = sizeof(pointer) * 2;
    AppendUnsigned(target, hexadecimal, reinterpret_cast<std::uintptr_t>(pointer));
}

} // namespace qxplatform
