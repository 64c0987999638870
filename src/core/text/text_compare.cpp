#include "core/text/text_compare.h"

#include "core/system_values.h"
#include "core/text/flat_text.h"

#include <windows.h>

#include <wchar.h>

namespace qx
{

namespace
{

// Limits the count to the text, because the system would read past the end of a shorter text.
int LengthWithin(const wchar_t* text, int maxChars)
{
    return maxChars < 0 ? -1 : static_cast<int>(wcsnlen(text, static_cast<std::size_t>(maxChars)));
}

int CompareByLocale(const wchar_t* a, const wchar_t* b, int maxChars, bool caseSensitive)
{
    return CompareStringW(InterfaceLanguage(), caseSensitive ? 0 : NORM_IGNORECASE, a, LengthWithin(a, maxChars), b,
               LengthWithin(b, maxChars)) -
           2;
}

} // namespace

int CompareText(const wchar_t* a, const wchar_t* b, int maxChars, CompareOrder order, bool caseSensitive)
{
    if (maxChars == 0 || a == b)
        return 0;
    const bool aEmpty = !a || *a == 0;
    const bool bEmpty = !b || *b == 0;
    if (aEmpty || bEmpty)
        return aEmpty && bEmpty ? 0 : aEmpty ? -1 : 1;
    if (order == CompareOrder::ByLocale)
        return CompareByLocale(a, b, maxChars, caseSensitive);
    if (maxChars < 1)
        return caseSensitive ? CompareUnits(a, b) : _wcsicmp(a, b);
    const auto count = static_cast<std::size_t>(maxChars);
    return caseSensitive ? wcsncmp(a, b, count) : _wcsnicmp(a, b, count);
}

} // namespace qx
