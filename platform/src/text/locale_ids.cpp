// Identifiers and names of locales.

#include <winnls.h>
#include <winnt.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "base/fail.h"
#include "base/give_text.h"
#include "base/text.h"
#include "text/locale.h"

using namespace qxplatform;

namespace
{

std::string LanguageOf(const Locale& locale)
{
    return locale.name.substr(0, locale.name.find('-'));
}

LANGID LanguageId(const Locale& locale)
{
    return LANGIDFROMLCID(locale.lcid);
}

} // namespace

LCID WINAPI GetUserDefaultLCID(void)
{
    return UserLocale().lcid;
}

LANGID WINAPI GetUserDefaultLangID(void)
{
    return LanguageId(UserLocale());
}

LANGID WINAPI GetUserDefaultUILanguage(void)
{
    return LanguageId(UserInterfaceLocale());
}

// All threads have the user's locale, because the environment has no settings for single threads.
LCID WINAPI GetThreadLocale(void)
{
    return UserLocale().lcid;
}

int WINAPI LCIDToLocaleName(LCID Locale, LPWSTR lpName, int cchName, DWORD dwFlags)
{
    const qxplatform::Locale* const locale = FindLocale(Locale);
    if (locale == nullptr || cchName < 0 || (cchName > 0 && lpName == nullptr))
        return Fail(ERROR_INVALID_PARAMETER);
    if ((dwFlags & ~static_cast<DWORD>(LOCALE_ALLOW_NEUTRAL_NAMES)) != 0)
        return Fail(ERROR_INVALID_FLAGS);
    const bool neutral = SUBLANGID(Locale) == SUBLANG_NEUTRAL && PRIMARYLANGID(Locale) != LANG_NEUTRAL;
    const bool asLanguage = neutral && (dwFlags & LOCALE_ALLOW_NEUTRAL_NAMES) != 0 && Locale != LOCALE_INVARIANT;
    const std::string name = asLanguage ? LanguageOf(*locale) : locale->name;
    return GiveText(name, lpName, cchName);
}
