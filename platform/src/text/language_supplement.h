// Data of the system's languages that ICU lacks.
#pragma once

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// Where a member is null, ICU's value is used. For a language without data this is the value of ICU's root.
struct LanguageSupplement
{
    std::string_view language;    // with its script if it has several
    const char16_t* days[7] = {}; // from Monday on
    const char16_t* months[12] = {};
    const char16_t* ofMonth[2] = {u"", u""}; // the text before a month in a date: before a consonant and before a vowel
    const char16_t* halves[2] = {};          // AM and PM
    const char16_t* decimalSeparator = nullptr;
    const char16_t* longDate = nullptr;
    const char16_t* shortDate = nullptr;
    const char16_t* time = nullptr;
    const char16_t* region = nullptr; // the name of the language's only region
};

// Returns the supplement of a locale. All of its members are null if ICU has the language or nothing is known about it.
const LanguageSupplement& SupplementOf(const Locale& locale);

} // namespace qxplatform
