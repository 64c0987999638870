#pragma once

namespace qx
{

enum class CompareOrder
{
    Ordinal,
    ByLocale // of the user interface language
};

// The comparison of String. Null and empty are the same and come before everything else. At most `maxChars` characters
// count: all if it is negative, none if it is 0.
int CompareText(const wchar_t* a, const wchar_t* b, int maxChars, CompareOrder order, bool caseSensitive);

} // namespace qx
