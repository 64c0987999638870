// Compares zero-terminated texts by the rules of the user's locale.
#pragma once

#include <cstdint>

namespace qx
{

enum class LocaleCase
{
    Sensitive,
    Ignored
};

// Returns -1, 0 or 1, or -2 if the system can't compare the texts.
int LocaleCompare(const wchar_t* a, const wchar_t* b, LocaleCase sense);

// Compares at most `count` characters of each text. If one text is a prefix of the other, the shorter one sorts first.
// Returns -1, 0 or 1, and also 0 if the system can't compare the texts.
int LocaleCompareN(const wchar_t* a, const wchar_t* b, std::uint32_t count, LocaleCase sense);

} // namespace qx
