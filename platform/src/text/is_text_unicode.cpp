// Guesses whether bytes are UTF-16.

#include <winbase.h>

#include <algorithm>
#include <cstring>

namespace
{

// The part that the system examines for its statistics.
constexpr std::size_t kSample = 256;

struct Units
{
    const unsigned char* bytes;
    std::size_t count;

    unsigned operator[](std::size_t i) const { return bytes[2 * i] | bytes[2 * i + 1] << 8; }
};

unsigned Reversed(unsigned unit)
{
    return (unit >> 8 | unit << 8) & 0xffff;
}

bool IsControl(unsigned unit)
{
    return unit == '\r' || unit == '\n' || unit == ' ' || unit == '\t' || unit == 0x3000;
}

int CountedTests(const Units& units)
{
    const std::size_t count = std::min(units.count, kSample);
    std::size_t latin = 0;
    std::size_t reversedLatin = 0;
    int result = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned unit = units[i];
        latin += unit <= 0xff;
        reversedLatin += (unit & 0xff) == 0 && unit != 0;
        if (IsControl(unit))
            result |= IS_TEXT_UNICODE_CONTROLS;
        if (IsControl(Reversed(unit)))
            result |= IS_TEXT_UNICODE_REVERSE_CONTROLS;
    }
    // Most characters of most texts are Latin letters, blanks and digits, with a zero in one of their bytes; 8-bit text
    // has no zeros.
    if (latin * 2 > count)
        result |= IS_TEXT_UNICODE_STATISTICS;
    if (reversedLatin * 2 > count)
        result |= IS_TEXT_UNICODE_REVERSE_STATISTICS;
    return result;
}

int WholeTests(const Units& units)
{
    int result = IS_TEXT_UNICODE_ASCII16 | IS_TEXT_UNICODE_REVERSE_ASCII16;
    for (std::size_t i = 0; i < units.count && result != 0; ++i)
    {
        if (units[i] == 0 || units[i] > 0x7f)
            result &= ~IS_TEXT_UNICODE_ASCII16;
        if (Reversed(units[i]) == 0 || Reversed(units[i]) > 0x7f)
            result &= ~IS_TEXT_UNICODE_REVERSE_ASCII16;
    }
    if (units[0] == 0xfeff)
        result |= IS_TEXT_UNICODE_SIGNATURE;
    if (units[0] == 0xfffe)
        result |= IS_TEXT_UNICODE_REVERSE_SIGNATURE;
    return result;
}

int AllTests(const unsigned char* bytes, std::size_t size)
{
    const Units units{bytes, size / 2};
    // A single ASCII character with its zero byte proves nothing.
    if (units.count == 0 || (size == 2 && units[0] <= 0x7f))
        return 0;
    return CountedTests(units) | WholeTests(units);
}

} // namespace

BOOL WINAPI IsTextUnicode(const VOID* lpv, int iSize, LPINT lpiResult)
{
    const std::size_t size = lpv != nullptr && iSize > 0 ? static_cast<std::size_t>(iSize) : 0;
    int passed = AllTests(static_cast<const unsigned char*>(lpv), size);
    if (lpiResult != nullptr)
        *lpiResult = passed &= *lpiResult;
    return passed != 0;
}
