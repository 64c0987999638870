// Comparison and casing of zero-terminated texts by the rules of the user's locale.
#pragma once

#include <cstdint>

namespace qx
{

enum class LocaleCase
{
    Sensitive,
    Ignored
};

// -1, 0, 1; -2 if the system can't compare the texts.
int LocaleCompare(const wchar_t* a, const wchar_t* b, LocaleCase sense);

// At most `count` characters of each. -1, 0, 1; the shorter of equal beginnings sorts first.
int LocaleCompareN(const wchar_t* a, const wchar_t* b, std::uint32_t count, LocaleCase sense);

} // namespace qx
