#include "text/locale_data.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace qxplatform
{

namespace
{

// The invariant locale is that of American English without its region's habits; ICU's nearest is POSIX English.
const char* IcuName(const Locale& locale)
{
    return locale.icu.empty() ? "en_US_POSIX" : locale.icu.c_str();
}

// ICU's habit of filling buffers: what does not fit counts as nothing, since nothing here is that long.
template <class Call>
std::u16string Text(Call call)
{
    UChar buffer[256];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = call(buffer, static_cast<int32_t>(std::size(buffer)), &status);
    if (U_FAILURE(status) || length < 0 || length > static_cast<int32_t>(std::size(buffer)))
        return {};
    return {buffer, static_cast<std::size_t>(length)};
}

std::u16string PlainBlanks(std::u16string text)
{
    for (char16_t& unit : text)
        if (unit == u'\u00a0' || unit == u'\u202f')
            unit = u' ';
    return text;
}

struct CloseDateFormat
{
    void operator()(UDateFormat* format) const { udat_close(format); }
};
using DateFormat = std::unique_ptr<UDateFormat, CloseDateFormat>;

struct CloseNumberFormat
{
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
using NumberFormat = std::unique_ptr<UNumberFormat, CloseNumberFormat>;

DateFormat OpenDateFormat(const Locale& locale, UDateFormatStyle time, UDateFormatStyle date)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::string name = std::string(IcuName(locale)) + "@calendar=gregorian";
    return DateFormat(udat_open(time, date, name.c_str(), nullptr, 0, nullptr, 0, &status));
}

std::u16string PatternOf(const DateFormat& format)
{
    if (format == nullptr)
        return {};
    return Text([&](UChar* buffer, int32_t size, UErrorCode* status)
        { return udat_toPattern(format.get(), false, buffer, size, status); });
}

// A letter of a CLDR pattern in the system's picture language; `count` times it stood there.
std::u16string PictureOf(char16_t letter, std::size_t count, DateStyle style)
{
    switch (letter)
    {
    case u'y':
    case u'u':
        return style == DateStyle::Short || count != 2 ? u"yyyy" : u"yy";
    case u'M':
    case u'L':
        return std::u16string(std::min<std::size_t>(count, 4), u'M');
    case u'E':
    case u'c':
        return count >= 4 ? u"dddd" : u"ddd";
    case u'a':
    case u'b':
    case u'B':
        return u"tt";
    case u'G':
        return u"gg";
    default:
        return std::u16string(count, letter);
    }
}

bool IsPatternLetter(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

// Quoted text has the same form in both languages.
std::u16string ToPicture(std::u16string_view pattern, DateStyle style)
{
    std::u16string picture;
    bool quoted = false;
    for (std::size_t i = 0; i < pattern.size();)
    {
        const char16_t unit = pattern[i];
        std::size_t end = i + 1;
        quoted ^= unit == u'\'';
        if (quoted || !IsPatternLetter(unit))
        {
            picture += unit;
        }
        else
        {
            while (end < pattern.size() && pattern[end] == unit)
                ++end;
            picture += PictureOf(unit, end - i, style);
        }
        i = end;
    }
    return PlainBlanks(std::move(picture));
}

std::u16string Symbol(const Locale& locale, UDateFormatSymbolType type, int32_t index)
{
    const DateFormat format = OpenDateFormat(locale, UDAT_NONE, UDAT_SHORT);
    if (format == nullptr)
        return {};
    return Text([&](UChar* buffer, int32_t size, UErrorCode* status)
        { return udat_getSymbols(format.get(), type, index, buffer, size, status); });
}

std::u16string NumberSymbol(const Locale& locale, UNumberFormatSymbol symbol)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::string name = std::string(IcuName(locale)) + "@numbers=latn";
    const NumberFormat format(unum_open(UNUM_DECIMAL, nullptr, 0, name.c_str(), nullptr, &status));
    if (U_FAILURE(status))
        return {};
    return Text([&](UChar* buffer, int32_t size, UErrorCode* result)
        { return unum_getSymbol(format.get(), symbol, buffer, size, result); });
}

std::u16string Display(
    const Locale& locale, const Locale& in, int32_t (*display)(const char*, const char*, UChar*, int32_t, UErrorCode*))
{
    return Text([&](UChar* buffer, int32_t size, UErrorCode* status)
        { return display(locale.icu.c_str(), IcuName(in), buffer, size, status); });
}

} // namespace

std::u16string DatePicture(const Locale& locale, DateStyle style)
{
    const UDateFormatStyle icuStyle = style == DateStyle::Short ? UDAT_SHORT : UDAT_FULL;
    return ToPicture(PatternOf(OpenDateFormat(locale, UDAT_NONE, icuStyle)), style);
}

std::u16string TimePicture(const Locale& locale)
{
    return ToPicture(PatternOf(OpenDateFormat(locale, UDAT_MEDIUM, UDAT_NONE)), DateStyle::Long);
}

std::u16string SeparatorOf(std::u16string_view picture)
{
    std::size_t begin = 0;
    while (begin < picture.size() && !IsPatternLetter(picture[begin]))
        ++begin;
    while (begin < picture.size() && IsPatternLetter(picture[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < picture.size() && !IsPatternLetter(picture[end]))
        ++end;
    return std::u16string(picture.substr(begin, end - begin));
}

std::u16string DayName(const Locale& locale, int day, bool abbreviated)
{
    // ICU counts the days from Sunday = 1.
    const int32_t index = (day + 1) % 7 + 1;
    return Symbol(locale, abbreviated ? UDAT_STANDALONE_SHORT_WEEKDAYS : UDAT_STANDALONE_WEEKDAYS, index);
}

std::u16string MonthName(const Locale& locale, int month, bool abbreviated)
{
    return Symbol(locale, abbreviated ? UDAT_STANDALONE_SHORT_MONTHS : UDAT_STANDALONE_MONTHS, month);
}

std::u16string DayHalfName(const Locale& locale, bool afternoon)
{
    return PlainBlanks(Symbol(locale, UDAT_AM_PMS, afternoon ? 1 : 0));
}

std::u16string DecimalSeparator(const Locale& locale)
{
    return NumberSymbol(locale, UNUM_DECIMAL_SEPARATOR_SYMBOL);
}

// Narrow blanks are the plain no-break ones in the system's data.
std::u16string GroupSeparator(const Locale& locale)
{
    const std::u16string separator = NumberSymbol(locale, UNUM_GROUPING_SEPARATOR_SYMBOL);
    return separator == u"\u202f" ? u"\u00a0" : separator;
}

std::u16string CurrencySymbol(const Locale& locale)
{
    return NumberSymbol(locale, UNUM_CURRENCY_SYMBOL);
}

std::u16string LanguageName(const Locale& locale, const Locale& in)
{
    return Display(locale, in, uloc_getDisplayName);
}

std::u16string BareLanguageName(const Locale& locale, const Locale& in)
{
    return Display(locale, in, uloc_getDisplayLanguage);
}

std::u16string RegionName(const Locale& locale, const Locale& in)
{
    return Display(locale, in, uloc_getDisplayCountry);
}

// The system's own name has it: its codes for Dari and Quechua are not ICU's.
std::u16string LanguageCode(const Locale& locale)
{
    const std::string_view code = std::string_view(locale.name).substr(0, locale.name.find('-'));
    return {code.begin(), code.end()};
}

std::u16string RegionCode(const Locale& locale)
{
    char code[ULOC_COUNTRY_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getCountry(locale.icu.c_str(), code, static_cast<int32_t>(sizeof code), &status);
    return U_SUCCESS(status) ? std::u16string(code, code + length) : std::u16string();
}

} // namespace qxplatform
