// Enumeration of locales: all of them, and by language group.

#include <winnls.h>
#include <winnt.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "base/fail.h"
#include "base/forever.h"
#include "text/locale.h"
#include "text/locale_code_pages.h"

using namespace qxplatform;

namespace
{

struct ListedLocale
{
    LCID lcid;
    LGRPID group;
};

// Upper limits of the language and region numbers in use.
constexpr WORD kMostLanguages = 0xa0;
constexpr WORD kMostRegions = 0x20;

// Identifiers known to ICU but not listed by the system: former countries, and regions and scripts that were never
// added to its list.
constexpr LCID kNotListed[] = {0x045f, 0x0460, 0x0469, 0x0479, 0x0493, 0x0812, 0x081a, 0x0851, 0x0c1a, 0x105f};

bool IsListed(LCID lcid)
{
    const Locale* const locale = FindLocale(lcid);
    return locale != nullptr && locale->lcid == lcid &&
           std::find(std::begin(kNotListed), std::end(kNotListed), lcid) == std::end(kNotListed);
}

// Locales with an identifier, ascending. A language without a region is not listed.
const std::vector<ListedLocale>& AllLocales()
{
    static constinit Forever<std::vector<ListedLocale>> list;
    return list.Get(
        []
        {
            std::vector<ListedLocale> locales;
            for (WORD region = SUBLANG_NEUTRAL + 1; region < kMostRegions; ++region)
                for (WORD language = LANG_NEUTRAL + 1; language < kMostLanguages; ++language)
                {
                    const LCID lcid = MAKELCID(MAKELANGID(language, region), SORT_DEFAULT);
                    if (IsListed(lcid))
                        locales.push_back({lcid, LanguageGroupOf(*FindLocale(lcid))});
                }
            return locales;
        });
}

struct LanguageGroup
{
    LGRPID id;
    std::u16string_view number;
    std::u16string_view name;
};

constexpr LanguageGroup kGroups[] = {
    {LGRPID_WESTERN_EUROPE, u"1", u"Western Europe and United States"},
    {LGRPID_CENTRAL_EUROPE, u"2", u"Central Europe"},
    {LGRPID_BALTIC, u"3", u"Baltic"},
    {LGRPID_GREEK, u"4", u"Greek"},
    {LGRPID_CYRILLIC, u"5", u"Cyrillic"},
    {LGRPID_TURKIC, u"6", u"Turkic"},
    {LGRPID_JAPANESE, u"7", u"Japanese"},
    {LGRPID_KOREAN, u"8", u"Korean"},
    {LGRPID_TRADITIONAL_CHINESE, u"9", u"Traditional Chinese"},
    {LGRPID_SIMPLIFIED_CHINESE, u"a", u"Simplified Chinese"},
    {LGRPID_THAI, u"b", u"Thai"},
    {LGRPID_HEBREW, u"c", u"Hebrew"},
    {LGRPID_ARABIC, u"d", u"Arabic"},
    {LGRPID_VIETNAMESE, u"e", u"Vietnamese"},
    {LGRPID_INDIC, u"f", u"Indic"},
    {LGRPID_GEORGIAN, u"10", u"Georgian"},
    {LGRPID_ARMENIAN, u"11", u"Armenian"},
};

// Copies a text for a callback, which might modify it.
template <std::size_t Size>
void Fill(wchar_t (&buffer)[Size], std::u16string_view text)
{
    *std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), Size - 1)), buffer) = 0;
}

struct LocaleText
{
    explicit LocaleText(LCID lcid)
    {
        for (std::size_t i = 0; i < 8; ++i)
            digits[i] = L"0123456789abcdef"[lcid >> (28 - 4 * i) & 0xf];
    }
    wchar_t digits[9] = {};
};

bool AreWrongFlags(DWORD flags, DWORD installed, DWORD supported)
{
    return flags != installed && flags != supported;
}

} // namespace

// All supported locales are installed.
BOOL WINAPI EnumSystemLocalesW(LOCALE_ENUMPROCW lpLocaleEnumProc, DWORD dwFlags)
{
    if (lpLocaleEnumProc == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if (AreWrongFlags(dwFlags, LCID_INSTALLED, LCID_SUPPORTED))
        return Fail(ERROR_INVALID_FLAGS);
    for (const ListedLocale& row : AllLocales())
        if (LocaleText text(row.lcid); !lpLocaleEnumProc(text.digits))
            break;
    return TRUE;
}

BOOL WINAPI EnumSystemLanguageGroupsW(LANGUAGEGROUP_ENUMPROCW lpLanguageGroupEnumProc, DWORD dwFlags, LONG_PTR lParam)
{
    if (lpLanguageGroupEnumProc == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if (AreWrongFlags(dwFlags, LGRPID_INSTALLED, LGRPID_SUPPORTED))
        return Fail(ERROR_INVALID_FLAGS);
    for (const LanguageGroup& row : kGroups)
    {
        wchar_t number[3];
        wchar_t name[40];
        Fill(number, row.number);
        Fill(name, row.name);
        if (!lpLanguageGroupEnumProc(row.id, number, name, LGRPID_INSTALLED, lParam))
            break;
    }
    return TRUE;
}

BOOL WINAPI EnumLanguageGroupLocalesW(
    LANGGROUPLOCALE_ENUMPROCW lpLangGroupLocaleEnumProc, LGRPID LanguageGroup, DWORD dwFlags, LONG_PTR lParam)
{
    const bool exists = std::any_of(std::begin(kGroups), std::end(kGroups),
        [LanguageGroup](const ::LanguageGroup& row) { return row.id == LanguageGroup; });
    if (lpLangGroupLocaleEnumProc == nullptr || !exists)
        return Fail(ERROR_INVALID_PARAMETER);
    if (dwFlags != 0)
        return Fail(ERROR_INVALID_FLAGS);
    for (const ListedLocale& row : AllLocales())
        if (row.group == LanguageGroup)
            if (LocaleText text(row.lcid); !lpLangGroupLocaleEnumProc(LanguageGroup, row.lcid, text.digits, lParam))
                break;
    return TRUE;
}
