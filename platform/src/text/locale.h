// Locales by the system's names and identifiers, with ICU's name.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

namespace qxplatform
{

struct Locale
{
    std::string icu;  // "de_DE"; empty for the invariant locale
    std::string name; // the system's name: "de-DE"
    LCID lcid;        // LOCALE_CUSTOM_UNSPECIFIED if it has no identifier of its own
};

// Return the locales in the environment: LC_ALL, LC_TIME, LANG, and for the UI language LC_ALL, LC_MESSAGES, LANG.
// en-US if these specify none.
const Locale& UserLocale();
const Locale& UserInterfaceLocale();

// Return null if there is no such locale. The default identifiers refer to the user's locale; a language alone refers
// to its main region. The results are valid until the process ends.
const Locale* FindLocale(LCID lcid);
const Locale* FindLocale(std::string_view name);

// Finds the user's locale for null, and the invariant locale for an empty name.
const Locale* FindLocale(const wchar_t* name);

} // namespace qxplatform
