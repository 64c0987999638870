#pragma once

namespace qx
{

enum class CompareOrder
{
    Ordinal,
    ByLocale // by the rules of the user interface language
};

// Compares two zero-terminated texts for String. Null and the empty text are equal and sort before any other text.
// Compares at most `maxChars` characters: all if it is negative, none if it is 0.
int CompareText(const wchar_t* a, const wchar_t* b, int maxChars, CompareOrder order, bool caseSensitive);

} // namespace qx
