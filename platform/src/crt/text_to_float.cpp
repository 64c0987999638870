#include <errno.h>
#include <stdlib.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace
{

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

int HexDigit(wchar_t c)
{
    if (IsDigit(c))
        return c - L'0';
    const wint_t lower = towlower(c);
    return lower >= L'a' && lower <= L'f' ? static_cast<int>(lower - L'a') + 10 : -1;
}

// Parses an exponent such as `e-12`, if a number follows the letter, and advances past it. Huge exponents are limited:
// no text has enough digits to compensate for them.
long long ReadExponent(const wchar_t*& text, wchar_t letter)
{
    constexpr long long kGreatest = std::numeric_limits<long long>::max() / 100;
    if (towlower(*text) != static_cast<wint_t>(letter))
        return 0;
    const wchar_t* position = text + 1;
    const bool negative = *position == L'-';
    if (*position == L'-' || *position == L'+')
        ++position;
    if (!IsDigit(*position))
        return 0;
    long long exponent = 0;
    for (; IsDigit(*position); ++position)
        exponent = std::min(exponent * 10 + (*position - L'0'), kGreatest);
    text = position;
    return negative ? -exponent : exponent;
}

double OutOfRange(double value)
{
    errno = ERANGE;
    return value;
}

// The decimal digits that can affect the value. Of the digits after them, only the presence of a nonzero one matters.
class SignificantDigits
{
public:
    void Append(char digit)
    {
        if (_count < kMostDigits)
            _digits[_count++] = digit;
        else
        {
            ++_dropped;
            if (digit != '0' && _digits[kMostDigits - 1] == '0')
                _digits[kMostDigits - 1] = '1';
        }
    }

    bool Empty() const { return _count == 0; }

    // Returns the value, with the last digit at 10^exponent.
    double Value(long long exponent)
    {
        if (_count == 0)
            return 0;
        exponent += _dropped;
        const long long leading = exponent + static_cast<long long>(_count) - 1;
        if (leading > kGreatestLeading || leading < kSmallestLeading)
            return OutOfRange(leading > 0 ? HUGE_VAL : 0);

        char* const begin = _digits.data();
        char* end = begin + _count;
        *end++ = 'e';
        end = std::to_chars(end, begin + _digits.size(), exponent).ptr;
        double value = 0;
        const auto result = std::from_chars(begin, end, value);
        if (result.ec == std::errc::result_out_of_range)
            return OutOfRange(leading > 0 ? HUGE_VAL : 0);
        return std::isinf(value) || value == 0 ? OutOfRange(value) : value;
    }

private:
    // Values halfway between two numbers have up to 767 digits; one more digit decides on which side the text is.
    static constexpr std::size_t kMostDigits = 768;
    // 1.8e308 and 2.5e-324 are the limits of values that don't round to infinity or 0.
    static constexpr long long kGreatestLeading = 308;
    static constexpr long long kSmallestLeading = -324;
    std::array<char, kMostDigits + 24> _digits;
    std::size_t _count = 0;
    long long _dropped = 0;
};

double ReadDecimal(const wchar_t*& text)
{
    SignificantDigits digits;
    const wchar_t* position = text;
    bool any = false;
    long long exponent = 0;
    for (bool fraction = false;; ++position)
    {
        if (*position == L'.' && !fraction)
        {
            fraction = true;
            continue;
        }
        if (!IsDigit(*position))
            break;
        any = true;
        exponent -= fraction;
        if (*position != L'0' || !digits.Empty())
            digits.Append(static_cast<char>(*position));
    }
    if (!any)
        return 0;
    exponent += ReadExponent(position, L'e');
    text = position;
    return digits.Value(exponent);
}

// Parses a number such as `0x1.8p3`, starting after its prefix.
double ReadHexadecimal(const wchar_t*& text)
{
    constexpr std::uint64_t kFull = std::uint64_t{1} << 60;
    const wchar_t* position = text;
    std::uint64_t mantissa = 0;
    long long exponent = 0;
    bool any = false;
    for (bool fraction = false;; ++position)
    {
        if (*position == L'.' && !fraction)
        {
            fraction = true;
            continue;
        }
        const int digit = HexDigit(*position);
        if (digit < 0)
            break;
        any = true;
        if (mantissa < kFull)
            mantissa = mantissa * 16 + static_cast<unsigned>(digit);
        else
        {
            exponent += 4;
            mantissa |= digit != 0; // far below the last significant bit
        }
        exponent -= fraction ? 4 : 0;
    }
    if (!any)
        return 0;
    exponent += ReadExponent(position, L'p');
    text = position;
    if (mantissa == 0)
        return 0;
    const double value = std::scalbln(static_cast<double>(mantissa), std::clamp(exponent, -10000LL, 10000LL));
    return std::isinf(value) || value == 0 ? OutOfRange(value) : value;
}

bool SkipWord(const wchar_t*& text, std::wstring_view word)
{
    if (_wcsnicmp(text, word.data(), word.size()) != 0)
        return false;
    text += word.size();
    return true;
}

double ReadMagnitude(const wchar_t*& text)
{
    if (SkipWord(text, L"infinity") || SkipWord(text, L"inf"))
        return HUGE_VAL;
    if (SkipWord(text, L"nan"))
        return std::numeric_limits<double>::quiet_NaN();
    if (text[0] == L'0' && (text[1] == L'x' || text[1] == L'X'))
    {
        const wchar_t* position = text + 2;
        const double value = ReadHexadecimal(position);
        if (position != text + 2)
        {
            text = position;
            return value;
        }
    }
    return ReadDecimal(text);
}

} // namespace

double wcstod(const wchar_t* text, wchar_t** end) noexcept
{
    const wchar_t* position = text;
    while (iswspace(*position))
        ++position;
    const bool negative = *position == L'-';
    if (*position == L'-' || *position == L'+')
        ++position;
    const wchar_t* const number = position;
    const double value = ReadMagnitude(position);
    const bool found = position != number;
    if (end)
        *end = const_cast<wchar_t*>(found ? position : text);
    if (!found)
        return 0;
    return negative ? -value : value;
}
