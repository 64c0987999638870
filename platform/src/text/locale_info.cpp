// GetLocaleInfoW: one table that maps information types to functions.

#include <winnls.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>

#include "base/fail.h"
#include "base/forever.h"
#include "base/give_text.h"
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
    DWORD (*number)(const Locale& locale) = nullptr; // for types that support LOCALE_RETURN_NUMBER
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

DWORD LanguageNumber(const Locale& locale)
{
    return locale.lcid & 0xffff;
}

std::u16string LanguageNumberText(const Locale& locale)
{
    std::u16string digits;
    for (int shift = 12; shift >= 0; shift -= 4)
        digits += u"0123456789abcdef"[LanguageNumber(locale) >> shift & 0xf];
    return digits;
}

// Returns 0 for month, day, year; 1 for day, month, year; 2 for year, month, day.
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
    return CodePagesOf(locale).ansi;
}

DWORD OemCodePage(const Locale& locale)
{
    return CodePagesOf(locale).oem;
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

template <int Day, bool Abbreviated>
std::u16string DayNamed(const Locale& locale)
{
    return DayName(locale, Day, Abbreviated);
}

template <int Month, bool Abbreviated>
std::u16string MonthNamed(const Locale& locale)
{
    return MonthName(locale, Month, Abbreviated);
}

// Returns a list separator that differs from the decimal separator.
std::u16string ListSeparator(const Locale& locale)
{
    return DecimalSeparator(locale) == u"," ? u";" : u",";
}

// Sorted by type.
constexpr InfoType kTypes[] = {
    {LOCALE_ILANGUAGE, LanguageNumberText, LanguageNumber},
    {LOCALE_SLANGUAGE,
        [](const Locale& locale)
        {
            return LanguageName(locale, UserInterfaceLocale());
        }},
    {LOCALE_SNATIVELANGNAME,
        [](const Locale& locale)
        {
            return BareLanguageName(locale, locale);
        }},
    {LOCALE_ICOUNTRY, Decimal<CountryNumber>, CountryNumber},
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
    {LOCALE_IDEFAULTCODEPAGE, Decimal<OemCodePage>, OemCodePage},
    {LOCALE_SLIST, ListSeparator},
    {LOCALE_SDECIMAL, DecimalSeparator},
    {LOCALE_STHOUSAND, GroupSeparator},
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
    {LOCALE_SLONGDATE,
        [](const Locale& locale)
        {
            return DatePicture(locale, DateStyle::Long);
        }},
    {LOCALE_IDATE, Decimal<DateOrder>, DateOrder},
    {LOCALE_S1159,
        [](const Locale& locale)
        {
            return DayHalfName(locale, false);
        }},
    {LOCALE_S2359,
        [](const Locale& locale)
        {
            return DayHalfName(locale, true);
        }},
    {LOCALE_SDAYNAME1, DayNamed<0, false>},
    {LOCALE_SDAYNAME2, DayNamed<1, false>},
    {LOCALE_SDAYNAME3, DayNamed<2, false>},
    {LOCALE_SDAYNAME4, DayNamed<3, false>},
    {LOCALE_SDAYNAME5, DayNamed<4, false>},
    {LOCALE_SDAYNAME6, DayNamed<5, false>},
    {LOCALE_SDAYNAME7, DayNamed<6, false>},
    {LOCALE_SABBREVDAYNAME1, DayNamed<0, true>},
    {LOCALE_SABBREVDAYNAME2, DayNamed<1, true>},
    {LOCALE_SABBREVDAYNAME3, DayNamed<2, true>},
    {LOCALE_SABBREVDAYNAME4, DayNamed<3, true>},
    {LOCALE_SABBREVDAYNAME5, DayNamed<4, true>},
    {LOCALE_SABBREVDAYNAME6, DayNamed<5, true>},
    {LOCALE_SABBREVDAYNAME7, DayNamed<6, true>},
    {LOCALE_SMONTHNAME1, MonthNamed<0, false>},
    {LOCALE_SMONTHNAME2, MonthNamed<1, false>},
    {LOCALE_SMONTHNAME3, MonthNamed<2, false>},
    {LOCALE_SMONTHNAME4, MonthNamed<3, false>},
    {LOCALE_SMONTHNAME5, MonthNamed<4, false>},
    {LOCALE_SMONTHNAME6, MonthNamed<5, false>},
    {LOCALE_SMONTHNAME7, MonthNamed<6, false>},
    {LOCALE_SMONTHNAME8, MonthNamed<7, false>},
    {LOCALE_SMONTHNAME9, MonthNamed<8, false>},
    {LOCALE_SMONTHNAME10, MonthNamed<9, false>},
    {LOCALE_SMONTHNAME11, MonthNamed<10, false>},
    {LOCALE_SMONTHNAME12, MonthNamed<11, false>},
    {LOCALE_SABBREVMONTHNAME1, MonthNamed<0, true>},
    {LOCALE_SABBREVMONTHNAME2, MonthNamed<1, true>},
    {LOCALE_SABBREVMONTHNAME3, MonthNamed<2, true>},
    {LOCALE_SABBREVMONTHNAME4, MonthNamed<3, true>},
    {LOCALE_SABBREVMONTHNAME5, MonthNamed<4, true>},
    {LOCALE_SABBREVMONTHNAME6, MonthNamed<5, true>},
    {LOCALE_SABBREVMONTHNAME7, MonthNamed<6, true>},
    {LOCALE_SABBREVMONTHNAME8, MonthNamed<7, true>},
    {LOCALE_SABBREVMONTHNAME9, MonthNamed<8, true>},
    {LOCALE_SABBREVMONTHNAME10, MonthNamed<9, true>},
    {LOCALE_SABBREVMONTHNAME11, MonthNamed<10, true>},
    {LOCALE_SABBREVMONTHNAME12, MonthNamed<11, true>},
    {LOCALE_SISO639LANGNAME, LanguageCode},
    {LOCALE_SISO3166CTRYNAME, RegionCode},
    {LOCALE_SNAME,
        [](const Locale& locale)
        {
            return Ascii(locale.name);
        }},
    {LOCALE_SENGLANGUAGE,
        [](const Locale& locale)
        {
            return BareLanguageName(locale, English());
        }},
    {LOCALE_SENGCOUNTRY,
        [](const Locale& locale)
        {
            return RegionName(locale, English());
        }},
    {LOCALE_STIMEFORMAT, TimePicture},
    {LOCALE_IDEFAULTANSICODEPAGE, Decimal<AnsiCodePage>, AnsiCodePage},
};

// The values of the invariant locale that differ from American English.
struct InvariantText
{
    LCTYPE type;
    const char16_t* text;
};
constexpr InvariantText kInvariant[] = {
    {LOCALE_SLANGUAGE, u"Invariant Language (Invariant Country)"},
    {LOCALE_SNATIVELANGNAME, u"Invariant Language"},
    {LOCALE_ICOUNTRY, u"1"},
    {LOCALE_SCOUNTRY, u"Invariant Country"},
    {LOCALE_SABBREVCTRYNAME, u"IVC"},
    {LOCALE_SNATIVECTRYNAME, u"Invariant Country"},
    {LOCALE_SCURRENCY, u"\u00a4"},
    {LOCALE_SDATE, u"/"},
    {LOCALE_SSHORTDATE, u"MM/dd/yyyy"},
    {LOCALE_SLONGDATE, u"dddd, dd MMMM yyyy"},
    {LOCALE_IDATE, u"0"},
    {LOCALE_SISO639LANGNAME, u"iv"},
    {LOCALE_SISO3166CTRYNAME, u"IV"},
    {LOCALE_SENGLANGUAGE, u"Invariant Language"},
    {LOCALE_SENGCOUNTRY, u"Invariant Country"},
    {LOCALE_STIMEFORMAT, u"HH:mm:ss"},
};

std::u16string MakeText(const Locale& locale, const InfoType& type)
{
    if (locale.icu.empty())
        for (const InvariantText& row : kInvariant)
            if (row.type == type.type)
                return row.text;
    return type.text(locale);
}

// Returns a value from a cache for each locale and type: ICU is slow, and the values don't change.
const std::u16string& TextOf(const Locale& locale, const InfoType& type)
{
    struct Known
    {
        Mutex mutex;
        std::map<std::pair<const Locale*, LCTYPE>, std::u16string> texts;
    };
    static constinit Forever<Known> theKnown;
    Known& known = theKnown.Get();
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
static_assert(std::is_sorted(std::begin(kTypes), std::end(kTypes), LessByType));

const InfoType* FindType(LCTYPE type)
{
    const InfoType* const row =
        std::lower_bound(std::begin(kTypes), std::end(kTypes), InfoType{type, nullptr}, LessByType);
    return row != std::end(kTypes) && row->type == type ? row : nullptr;
}

constexpr LCTYPE kOptions = LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP | LOCALE_RETURN_NUMBER;

int GiveNumber(const Locale& locale, const InfoType& type, wchar_t* buffer, int size)
{
    const ForkHold hold; // no fork while ICU holds its own locks
    const DWORD number = type.number(locale);
    constexpr int kNeeded = sizeof number / sizeof(wchar_t);
    if (size == 0)
        return kNeeded;
    if (size < kNeeded)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(buffer, &number, sizeof number);
    return kNeeded;
}

} // namespace

int WINAPI GetLocaleInfoW(LCID Locale, LCTYPE LCType, LPWSTR lpLCData, int cchData)
{
    const qxplatform::Locale* const locale = FindLocale(Locale);
    if (locale == nullptr || cchData < 0 || (cchData > 0 && lpLCData == nullptr))
        return Fail(ERROR_INVALID_PARAMETER);
    const InfoType* const type = FindType(LCType & ~kOptions);
    const bool wantsNumber = (LCType & LOCALE_RETURN_NUMBER) != 0;
    if (type == nullptr || (wantsNumber && type->number == nullptr))
        return Fail(ERROR_INVALID_FLAGS);
    return wantsNumber ? GiveNumber(*locale, *type, lpLCData, cchData)
                       : GiveText(TextOf(*locale, *type), lpLCData, cchData);
}
