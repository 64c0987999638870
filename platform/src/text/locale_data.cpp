#include "text/locale_data.h"

#include <unicode/ucurr.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>
#include <unicode/ures.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "base/fork_gate.h"
#include "text/calling_codes.h"
#include "text/icu_text.h"
#include "text/language_supplement.h"

namespace qxplatform
{

namespace
{

// ICU has locks of its own, which a forked child must not find taken: all calls that open data are inside a ForkHold.

struct CloseBundle
{
    void operator()(UResourceBundle* bundle) const { ures_close(bundle); }
};
using Bundle = std::unique_ptr<UResourceBundle, CloseBundle>;

// Languages without data that use the data of a related language, as on the system.
struct Kin
{
    std::string_view language;
    const char* data;
};
constexpr Kin kKin[] = {{"sma", "se"}, {"smj", "se"}, {"sms", "se"}};

// Returns false for a language without data, for which ICU returns the data of the process's own locale.
bool HasData(const std::string& icu)
{
    const ForkHold hold;
    UErrorCode status = U_ZERO_ERROR;
    const Bundle bundle(ures_open(nullptr, icu.c_str(), &status));
    return U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
}

struct CloseNumberFormat
{
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
using NumberFormat = std::unique_ptr<UNumberFormat, CloseNumberFormat>;

std::u16string Symbol(const Locale& locale, UDateFormatSymbolType type, std::int32_t index)
{
    const ForkHold hold;
    UErrorCode status = U_ZERO_ERROR;
    const std::string name = IcuName(locale) + "@calendar=gregorian";
    const DateFormat format(udat_open(UDAT_NONE, UDAT_SHORT, name.c_str(), nullptr, 0, nullptr, 0, &status));
    if (format == nullptr)
        return {};
    return IcuText([&](UChar* buffer, std::int32_t size, UErrorCode* result)
        { return udat_getSymbols(format.get(), type, index, buffer, size, result); });
}

std::u16string NumberSymbol(const Locale& locale, UNumberFormatSymbol symbol)
{
    const ForkHold hold;
    UErrorCode status = U_ZERO_ERROR;
    const std::string name = IcuName(locale) + "@numbers=latn";
    const NumberFormat format(unum_open(UNUM_DECIMAL, nullptr, 0, name.c_str(), nullptr, &status));
    if (U_FAILURE(status))
        return {};
    return IcuText([&](UChar* buffer, std::int32_t size, UErrorCode* result)
        { return unum_getSymbol(format.get(), symbol, buffer, size, result); });
}

Bundle Child(const Bundle& bundle, const char* key)
{
    UErrorCode status = U_ZERO_ERROR;
    Bundle child(bundle == nullptr ? nullptr : ures_getByKey(bundle.get(), key, nullptr, &status));
    return U_SUCCESS(status) ? std::move(child) : nullptr;
}

// Opens the bundle of a name without the data inherited from its parents.
Bundle OpenOwnData(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    Bundle bundle(ures_openDirect(nullptr, name.c_str(), &status));
    return U_SUCCESS(status) ? std::move(bundle) : nullptr;
}

std::u16string TextAt(const Bundle& bundle, std::int32_t index)
{
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const UChar* const text =
        bundle == nullptr ? nullptr : ures_getStringByIndex(bundle.get(), index, &length, &status);
    return text != nullptr && U_SUCCESS(status) ? std::u16string(text, static_cast<std::size_t>(length))
                                                : std::u16string();
}

// Returns the name from which `name` inherits; "root" for the last one.
std::string ParentOf(const std::string& name, const Bundle& bundle)
{
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const UChar* const parent =
        bundle == nullptr ? nullptr : ures_getStringByKey(bundle.get(), "%%Parent", &length, &status);
    if (parent != nullptr && U_SUCCESS(status))
        return {parent, parent + length};
    const std::size_t end = name.rfind('_');
    return end == name.npos ? "root" : name.substr(0, end);
}

std::u16string Display(const Locale& locale, const Locale& in,
    std::int32_t (*display)(const char*, const char*, UChar*, std::int32_t, UErrorCode*))
{
    const ForkHold hold;
    const auto ask = [&](const char* language, bool& isCode)
    {
        return IcuText(
            [&](UChar* buffer, std::int32_t size, UErrorCode* status)
            {
                const std::int32_t length = display(locale.icu.c_str(), language, buffer, size, status);
                isCode = *status == U_USING_DEFAULT_WARNING;
                return length;
            });
    };
    bool isCode = false;
    const std::u16string name = ask(IcuName(in).c_str(), isCode);
    return isCode ? ask("en", isCode) : name;
}

// ICU has currencies only for countries.
struct CurrencyOfPart
{
    std::u16string_view part;
    const char16_t* currency;
};
constexpr CurrencyOfPart kCurrenciesOfParts[] = {{u"001", u"XDR"}, {u"029", u"XCD"}, {u"419", u"XDR"}};

std::u16string CurrencyCode(const Locale& locale)
{
    const ForkHold hold;
    const std::u16string region = RegionCode(locale);
    for (const CurrencyOfPart& row : kCurrenciesOfParts)
        if (row.part == region)
            return row.currency;
    return IcuText([&](UChar* buffer, std::int32_t size, UErrorCode* status)
        { return ucurr_forLocale(locale.icu.c_str(), buffer, size, status); });
}

bool IsVowel(char16_t letter)
{
    return std::u16string_view(u"aeiou").find(letter) != std::u16string_view::npos;
}

// The system omits the first part of this country's name.
constexpr std::u16string_view kSouthKorea = u"South Korea";

} // namespace

// The invariant locale is American English without regional conventions; ICU's closest locale is POSIX English. A
// locale without data or a related language gets the root's data.
std::string IcuName(const Locale& locale)
{
    if (locale.icu.empty())
        return "en_US_POSIX";
    const std::string_view language = std::string_view(locale.icu).substr(0, locale.icu.find('_'));
    for (const Kin& row : kKin)
        if (row.language == language)
            return row.data;
    const std::string name = locale.icu.substr(0, locale.icu.find('@')); // a sort order has no data of its own
    return HasData(name) ? name : "root";
}

std::u16string DayName(const Locale& locale, int day, bool abbreviated)
{
    if (const char16_t* const own = SupplementOf(locale).days[day])
        return own;
    // ICU counts the days from Sunday = 1.
    const std::int32_t index = (day + 1) % 7 + 1;
    return Symbol(locale, abbreviated ? UDAT_SHORT_WEEKDAYS : UDAT_WEEKDAYS, index);
}

std::u16string MonthName(const Locale& locale, int month, bool abbreviated)
{
    if (const char16_t* const own = SupplementOf(locale).months[month])
        return own;
    return Symbol(locale, abbreviated ? UDAT_STANDALONE_SHORT_MONTHS : UDAT_STANDALONE_MONTHS, month);
}

std::u16string MonthNameInDate(const Locale& locale, int month, bool abbreviated)
{
    const LanguageSupplement& supplement = SupplementOf(locale);
    if (const char16_t* const own = supplement.months[month])
        return supplement.ofMonth[IsVowel(own[0]) ? 1 : 0] + std::u16string(own);
    return Symbol(locale, abbreviated ? UDAT_SHORT_MONTHS : UDAT_MONTHS, month);
}

std::u16string EraName(const Locale& locale)
{
    return Symbol(locale, UDAT_ERAS, 1);
}

// Returns the abbreviated form, which ICU's own functions ignore.
std::u16string DayHalfName(const Locale& locale, bool afternoon)
{
    const ForkHold hold;
    if (const char16_t* const own = SupplementOf(locale).halves[afternoon ? 1 : 0])
        return own;
    for (std::string name = IcuName(locale); name != "root";)
    {
        const Bundle own = OpenOwnData(name);
        const Bundle gregorian = Child(Child(own, "calendar"), "gregorian");
        if (std::u16string text = TextAt(Child(gregorian, "AmPmMarkersAbbr"), afternoon ? 1 : 0); !text.empty())
            return text;
        name = ParentOf(name, own);
    }
    return Symbol(locale, UDAT_AM_PMS, afternoon ? 1 : 0);
}

std::u16string DecimalSeparator(const Locale& locale)
{
    if (const char16_t* const own = SupplementOf(locale).decimalSeparator)
        return own;
    return NumberSymbol(locale, UNUM_DECIMAL_SEPARATOR_SYMBOL);
}

// Returns the separator with a plain no-break blank instead of a narrow one, as in the system's data.
std::u16string GroupSeparator(const Locale& locale)
{
    const std::u16string separator = NumberSymbol(locale, UNUM_GROUPING_SEPARATOR_SYMBOL);
    return separator == u"\u202f" ? u"\u00a0" : separator;
}

// Returns the currency's symbol in its own country, without the prefix that distinguishes it from other currencies.
std::u16string CurrencySymbol(const Locale& locale)
{
    const ForkHold hold;
    const std::u16string code = CurrencyCode(locale);
    if (code.empty())
        return NumberSymbol(locale, UNUM_CURRENCY_SYMBOL);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const UChar* const symbol =
        ucurr_getName(code.c_str(), IcuName(locale).c_str(), UCURR_NARROW_SYMBOL_NAME, nullptr, &length, &status);
    return U_SUCCESS(status) ? std::u16string(symbol, static_cast<std::size_t>(length)) : code;
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
    const char16_t* const own = SupplementOf(in).region;
    if (own != nullptr && RegionCode(in) == RegionCode(locale))
        return own;
    std::u16string name = Display(locale, in, uloc_getDisplayCountry);
    return name == kSouthKorea ? u"Korea" : std::move(name);
}

// Returns the code in the system's name, because the system's codes for Dari and Quechua differ from ICU's.
std::u16string LanguageCode(const Locale& locale)
{
    const std::string_view code = std::string_view(locale.name).substr(0, locale.name.find('-'));
    return {code.begin(), code.end()};
}

std::u16string RegionCode(const Locale& locale)
{
    char code[ULOC_COUNTRY_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        uloc_getCountry(locale.icu.c_str(), code, static_cast<std::int32_t>(sizeof code), &status);
    return U_SUCCESS(status) ? std::u16string(code, code + length) : std::u16string();
}

// Returns the three-letter country code, or the number of a world region.
std::u16string LetterRegionCode(const Locale& locale)
{
    const std::string_view code = uloc_getISO3Country(locale.icu.c_str());
    return code.empty() ? RegionCode(locale) : std::u16string(code.begin(), code.end());
}

unsigned CallingCode(const Locale& locale)
{
    const std::u16string region = RegionCode(locale);
    return CallingCodeOf(std::string(region.begin(), region.end()));
}

} // namespace qxplatform
