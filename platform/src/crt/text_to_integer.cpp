#include "invalid_parameter.h"

#include <stdlib.h>
#include <wchar.h>
#include <wctype.h>

#include <cstdint>
#include <limits>
#include <type_traits>

namespace
{

// The digit 0 of each script whose decimal digits the runtime recognises, ascending.
constexpr wchar_t kScriptZeros[] = {0x660, 0x6f0, 0x966, 0x9e6, 0xa66, 0xae6, 0xb66, 0xc66, 0xce6, 0xd66, 0xe50, 0xed0,
    0xf20, 0x1040, 0x17e0, 0x1810, 0xff10};

constexpr int kGreatestBase = 36;

// Returns the value of a digit or letter in the largest base, or a larger value for any other character.
int DigitValue(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    const wint_t lower = towlower(c);
    if (lower >= L'a' && lower <= L'z')
        return static_cast<int>(lower - L'a') + 10;
    for (const wchar_t zero : kScriptZeros)
        if (c >= zero && c <= zero + 9)
            return c - zero;
    return kGreatestBase;
}

struct ParsedInteger
{
    const wchar_t* end = nullptr; // after the last digit; null if there was no number
    std::uint64_t magnitude = 0;
    bool negative = false;
    bool overflow = false;
};

ParsedInteger Parse(const wchar_t* text, int base)
{
    ParsedInteger number;
    while (iswspace(*text))
        ++text;
    if (*text == L'-' || *text == L'+')
        number.negative = *text++ == L'-';
    const bool prefixed = *text == L'0' && (text[1] == L'x' || text[1] == L'X');
    if (base == 0)
        base = prefixed ? 16 : *text == L'0' ? 8 : 10;
    if (base == 16 && prefixed)
        text += 2;

    for (int digit = DigitValue(*text); digit < base; digit = DigitValue(*++text))
    {
        number.overflow = number.overflow ||
                          __builtin_mul_overflow(number.magnitude, static_cast<unsigned>(base), &number.magnitude) ||
                          __builtin_add_overflow(number.magnitude, static_cast<unsigned>(digit), &number.magnitude);
        number.end = text + 1;
    }
    return number;
}

template <class T>
T OutOfRange(T limit)
{
    errno = ERANGE;
    return limit;
}

// Returns the value limited to the range of T, with the error ERANGE if it is outside. Unsigned values wrap after a
// minus.
template <class T>
T InRangeOf(const ParsedInteger& number)
{
    using Limits = std::numeric_limits<T>;
    constexpr auto kGreatest = static_cast<std::uint64_t>(Limits::max());
    if constexpr (std::is_unsigned_v<T>)
    {
        if (number.overflow || number.magnitude > kGreatest)
            return OutOfRange(Limits::max());
        return static_cast<T>(number.negative ? 0 - number.magnitude : number.magnitude);
    }
    else
    {
        if (number.overflow || number.magnitude > kGreatest + number.negative)
            return OutOfRange(number.negative ? Limits::min() : Limits::max());
        return static_cast<T>(number.negative ? 0 - number.magnitude : number.magnitude);
    }
}

template <class T>
T Read(const wchar_t* text, wchar_t** end, int base)
{
    ParsedInteger number;
    if (base == 0 || (base >= 2 && base <= kGreatestBase))
        number = Parse(text, base);
    else
        qxplatform::RefuseParameter(EINVAL);
    if (end)
        *end = const_cast<wchar_t*>(number.end ? number.end : text);
    return number.end ? InRangeOf<T>(number) : T{0};
}

} // namespace

long wcstol(const wchar_t* text, wchar_t** end, int base) noexcept
{
    return Read<std::int32_t>(text, end, base);
}

unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base) noexcept
{
    return Read<std::uint32_t>(text, end, base);
}

int _wtoi(const wchar_t* text) noexcept
{
    return Read<std::int32_t>(text, nullptr, 10);
}
