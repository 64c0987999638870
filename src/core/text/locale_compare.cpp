#include "core/text/locale_compare.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <cstdint>

namespace qx
{

namespace
{

DWORD ComparisonFlags(LocaleCase sense)
{
    return sense == LocaleCase::Ignored ? NORM_IGNORECASE : 0;
}

int LengthUpTo(const wchar_t* text, std::uint32_t count)
{
    return static_cast<int>(wcsnlen(text, std::min<std::uint32_t>(count, INT_MAX)));
}

} // namespace

int LocaleCompare(const wchar_t* a, const wchar_t* b, LocaleCase sense)
{
    return CompareStringW(LOCALE_USER_DEFAULT, ComparisonFlags(sense), a, -1, b, -1) - 2;
}

int LocaleCompareN(const wchar_t* a, const wchar_t* b, std::uint32_t count, LocaleCase sense)
{
    if (a == nullptr || b == nullptr)
    {
        return 0; // like any comparison that the system rejects
    }
    const int lengthA = LengthUpTo(a, count);
    const int lengthB = LengthUpTo(b, count);
    const int common = std::min(lengthA, lengthB);
    switch (CompareStringW(LOCALE_USER_DEFAULT, ComparisonFlags(sense), a, common, b, common))
    {
    case CSTR_LESS_THAN:
        return -1;
    case CSTR_GREATER_THAN:
        return 1;
    case CSTR_EQUAL:
        return lengthA < lengthB ? -1 : lengthA > lengthB ? 1 : 0;
    default:
        return 0;
    }
}

} // namespace qx
