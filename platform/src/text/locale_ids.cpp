// Numbers and names of locales.

#include <winnls.h>
#include <winnt.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "base/fail.h"
#include "base/text.h"
#include "text/locale.h"

using namespace qxplatform;

namespace
{

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

// The environment knows no settings for a thread.
LCID WINAPI GetThreadLocale(void)
{
    return UserLocale().lcid;
}

int WINAPI LCIDToLocaleName(LCID Locale, LPWSTR lpName, int cchName, DWORD dwFlags)
{
    const qxplatform::Locale* const locale = FindLocale(Locale);
    if (locale == nullptr || cchName < 0 || (cchName > 0 && lpName == nullptr))
        return Fail(ERROR_INVALID_PARAMETER);
    if (dwFlags != 0)
        return Fail(ERROR_INVALID_FLAGS);
    const std::string& name = locale->name;
    const int size = static_cast<int>(name.size()) + 1;
    if (cchName == 0)
        return size;
    if (cchName < size)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    *std::copy(name.begin(), name.end(), lpName) = 0;
    return size;
}
