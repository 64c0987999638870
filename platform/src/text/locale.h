// Locales by the system's names and numbers, with ICU's name for what stands behind them.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

namespace qxplatform
{

struct Locale
{
    std::string icu;  // "de_DE"; empty for the invariant locale
    std::string name; // the system's: "de-DE"
    LCID lcid;        // LOCALE_CUSTOM_UNSPECIFIED for one that has no number of its own
};

// Those of the environment: LC_ALL, LC_TIME, LANG, and LC_ALL, LC_MESSAGES, LANG for the language of texts. en-US where
// these name none.
const Locale& UserLocale();
const Locale& UserInterfaceLocale();

// Null for what is no locale. The defaults count as the user's; a language alone gives its main region. The results
// live as long as the process.
const Locale* FindLocale(LCID lcid);
const Locale* FindLocale(std::string_view name);

// A null name is the user's locale, an empty one the invariant locale.
const Locale* FindLocale(const wchar_t* name);

} // namespace qxplatform
