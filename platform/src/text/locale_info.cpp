// GetLocaleInfoW: one table from the type of information to what gives it.

#include <winnls.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>

#include "base/fail.h"
#include "base/forever.h"
#include "text/date_pictures.h"
#include "text/locale.h"
#include "text/locale_code_pages.h"
#include "text/locale_data.h"

using namespace qxplatform;

namespace
{

struct InfoType
{
    LCTYPE type;
    std::u16string (*text)(const Locale& locale);
};

const Locale& English()
{
    static const Locale& english = *FindLocale(LCID{0x0409});
    return english;
}

std::u16string Ascii(std::string_view text)
{
    return {text.begin(), text.end()};
}

// 0 month, day, year; 1 day, month, year; 2 year, month, day.
DWORD DateOrder(const Locale& locale)
{
    const std::u16string picture = DatePicture(locale, DateStyle::Numbers);
    switch (picture[std::min(picture.find_first_of(u"dMy"), picture.size())])
    {
    case u'M':
        return 0;
    case u'y':
        return 2;
    default:
        return 1;
    }
}

DWORD AnsiCodePage(const Locale& locale)
{
    return AnsiCodePageOf(locale);
}

DWORD CountryNumber(const Locale& locale)
{
    return CallingCode(locale);
}

template <DWORD (*Number)(const Locale&)>
std::u16string Decimal(const Locale& locale)
{
    return Ascii(std::to_string(Number(locale)));
}

template <int Day>
std::u16string DayNamed(const Locale& locale)
{
    return DayName(locale, Day, false);
}

// Sorted by type.
constexpr InfoType TYPES[] = {
    {LOCALE_ICOUNTRY, Decimal<CountryNumber>},
    {LOCALE_SCOUNTRY,
        [](const Locale& locale)
        {
            return RegionName(locale, UserInterfaceLocale());
        }},
    {LOCALE_SABBREVCTRYNAME, LetterRegionCode},
    {LOCALE_SNATIVECTRYNAME,
        [](const Locale& locale)
        {
            return RegionName(locale, locale);
        }},
    {LOCALE_SCURRENCY, CurrencySymbol},
    {LOCALE_SDATE,
        [](const Locale& locale)
        {
            return DateSeparatorOf(DatePicture(locale, DateStyle::Numbers));
        }},
    {LOCALE_STIME,
        [](const Locale& locale)
        {
            return TimeSeparatorOf(TimePicture(locale));
        }},
    {LOCALE_SSHORTDATE,
        [](const Locale& locale)
        {
            return DatePicture(locale, DateStyle::Short);
        }},
    {LOCALE_IDATE, Decimal<DateOrder>},
    {LOCALE_SDAYNAME1, DayNamed<0>},
    {LOCALE_SDAYNAME2, DayNamed<1>},
    {LOCALE_SDAYNAME3, DayNamed<2>},
    {LOCALE_SDAYNAME4, DayNamed<3>},
    {LOCALE_SDAYNAME5, DayNamed<4>},
    {LOCALE_SDAYNAME6, DayNamed<5>},
    {LOCALE_SDAYNAME7, DayNamed<6>},
    {LOCALE_SISO639LANGNAME, LanguageCode},
    {LOCALE_SISO3166CTRYNAME, RegionCode},
    {LOCALE_SENGCOUNTRY,
        [](const Locale& locale)
        {
            return RegionName(locale, English());
        }},
    {LOCALE_STIMEFORMAT, TimePicture},
    {LOCALE_IDEFAULTANSICODEPAGE, Decimal<AnsiCodePage>},
};

// What the invariant locale has otherwise than American English.
struct InvariantText
{
    LCTYPE type;
    const char16_t* text;
};
constexpr InvariantText INVARIANT[] = {
    {LOCALE_ICOUNTRY, u"1"},
    {LOCALE_SCOUNTRY, u"Invariant Country"},
    {LOCALE_SABBREVCTRYNAME, u"IVC"},
    {LOCALE_SNATIVECTRYNAME, u"Invariant Country"},
    {LOCALE_SCURRENCY, u"\u00a4"},
    {LOCALE_SDATE, u"/"},
    {LOCALE_SSHORTDATE, u"MM/dd/yyyy"},
    {LOCALE_IDATE, u"0"},
    {LOCALE_SISO639LANGNAME, u"iv"},
    {LOCALE_SISO3166CTRYNAME, u"IV"},
    {LOCALE_SENGCOUNTRY, u"Invariant Country"},
    {LOCALE_STIMEFORMAT, u"HH:mm:ss"},
};

std::u16string MakeText(const Locale& locale, const InfoType& type)
{
    if (locale.icu.empty())
        for (const InvariantText& row : INVARIANT)
            if (row.type == type.type)
                return row.text;
    return type.text(locale);
}

// Made once for each locale and type: ICU takes its time, and none of it changes.
const std::u16string& TextOf(const Locale& locale, const InfoType& type)
{
    struct Known
    {
        std::mutex mutex;
        std::map<std::pair<const Locale*, LCTYPE>, std::u16string> texts;
    };
    static Known& known = MakeForever<Known>();
    const std::lock_guard lock(known.mutex);
    const auto [entry, isNew] = known.texts.try_emplace({&locale, type.type});
    if (isNew)
        entry->second = MakeText(locale, type);
    return entry->second;
}

constexpr bool LessByType(const InfoType& a, const InfoType& b)
{
    return a.type < b.type;
}
static_assert(std::is_sorted(std::begin(TYPES), std::end(TYPES), LessByType));

const InfoType* FindType(LCTYPE type)
{
    const InfoType* const row =
        std::lower_bound(std::begin(TYPES), std::end(TYPES), InfoType{type, nullptr}, LessByType);
    return row != std::end(TYPES) && row->type == type ? row : nullptr;
}

constexpr LCTYPE OPTIONS = LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP;

int GiveText(const std::u16string& text, wchar_t* buffer, int size)
{
    const int needed = static_cast<int>(text.size()) + 1;
    if (size == 0)
        return needed;
    if (size < needed)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return needed;
}

} // namespace

int WINAPI GetLocaleInfoW(LCID Locale, LCTYPE LCType, LPWSTR lpLCData, int cchData)
{
    const qxplatform::Locale* const locale = FindLocale(Locale);
    if (locale == nullptr || cchData < 0 || (cchData > 0 && lpLCData == nullptr))
        return Fail(ERROR_INVALID_PARAMETER);
    const InfoType* const type = FindType(LCType & ~OPTIONS);
    return type != nullptr ? GiveText(TextOf(*locale, *type), lpLCData, cchData) : Fail(ERROR_INVALID_FLAGS);
}
