// What ICU has no data of, in languages of the system.
#pragma once

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// A member that is null is as ICU has it, which for a language without data is as for all of these.
struct LanguageSupplement
{
    std::string_view language;    // with its script where it has several
    const char16_t* days[7] = {}; // from Monday on
    const char16_t* months[12] = {};
    const char16_t* ofMonth[2] = {u"", u""}; // what stands before a month in a date: before a consonant, a vowel
    const char16_t* halves[2] = {};          // of the day
    const char16_t* decimalSeparator = nullptr;
    const char16_t* longDate = nullptr;
    const char16_t* shortDate = nullptr;
    const char16_t* time = nullptr;
    const char16_t* region = nullptr; // the name of the language's one region
};

// All null for a language that ICU knows, or that nothing is known of.
const LanguageSupplement& SupplementOf(const Locale& locale);

} // namespace qxplatform
