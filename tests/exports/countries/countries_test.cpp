// The exports on countries, with the real system and the library's own rows.
#include <qxut23/countries.h>
#include <qxut23/iso_countries.h>

#include "support/run_in_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace
{

// Formats a value as text: numbers in decimal, texts in UTF-8, "-" for no value.
std::string Text(const VARIANT& value)
{
    if (value.vt == VT_I4)
        return std::to_string(value.lVal);
    if (value.vt != VT_BSTR)
        return value.vt == VT_EMPTY ? "-" : "?";
    char bytes[1024];
    return WideCharToMultiByte(CP_UTF8, 0, value.bstrVal, -1, bytes, sizeof bytes, nullptr, nullptr) > 0 ? bytes : "?";
}

std::string Info(const wchar_t* name, std::uint32_t type)
{
    VARIANT value{};
    EXPECT_EQ(UtilLocGetCountryInfo(name, type, &value), 0);
    std::string text = Text(value);
    VariantClear(&value);
    return text;
}

TEST(CountryExports, Values)
{
    constexpr std::uint32_t kLocale = QXUT_COUNTRY_LCID, kEnglish = QXUT_COUNTRY_ENGLISH_NAME,
                            kNative = QXUT_COUNTRY_NATIVE_NAME, kCurrency = QXUT_COUNTRY_CURRENCY;
    constexpr std::tuple<const wchar_t*, std::uint32_t, const char*> kCases[] = {{L"DEU", kLocale, "1031"},
        {L"de-AT", kLocale, "3079"}, {L"UK", kLocale, "2057"}, {L"CH", kLocale, "2055"},
        {L"Ghana*2057", kLocale, "2057"}, {nullptr, kLocale, "0"}, {L"Germany", QXUT_COUNTRY_CALLING_CODE, "49"},
        {L"Germany", QXUT_COUNTRY_ISO3166, "DE"}, {L"GH", QXUT_COUNTRY_ISO3166, "GHA"},
        {L"Germany", QXUT_COUNTRY_NOTHING, "-"}, {L"Germany", kCurrency, "€"}, {L"NGA", kCurrency, "Naira"},
        {L"GR", QXUT_COUNTRY_CODE_PAGE, "1253"}, {L"yt", kEnglish, "Mayotte"}, {L"Atlantis", kEnglish, ""},
        {L"CI", kEnglish, "Côte d'Ivoire"}, {L"CY", kNative, "Κύπρος"},
        {L"Algeria*5121", kNative, "الجزائر"}, // the last row
        // Rows override the system's values; of several rows with the same LCID the last one wins.
        {L"1033", kEnglish, "American Samoa"}, {L"2057", kEnglish, "State of Grenada"},
        {L"Lao Peoples's Democratic Republic", QXUT_COUNTRY_CALLING_CODE, "856"}};
    for (const auto& [name, type, value] : kCases)
        EXPECT_EQ(Info(name, type), value) << testing::PrintToString(name) << ' ' << type;
}

TEST(CountryExports, LanguagesTypesAndVariants)
{
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(L"released");
    EXPECT_EQ(UtilLocGetCountryInfo(L"DE", QXUT_COUNTRY_NATIVE_NAME, &value), 0);
    EXPECT_EQ(Text(value), "Deutschland");
    for (const auto& [name, locale] : {std::pair(L"de", "7"), {L"sr-RS", "9242"}, {nullptr, "0"}})
    {
        EXPECT_EQ(UtilLocGetLanguageInfo(name, QXUT_LANGUAGE_LCID, &value), 0);
        EXPECT_EQ(Text(value), locale);
    }
    EXPECT_EQ(UtilLocGetCountryInfo(L"DE", 8, &value), -18);
    EXPECT_EQ(value.vt, VT_EMPTY);
    for (const std::int32_t type : {1, -1})
    {
        EXPECT_EQ(UtilLocGetLanguageInfo(L"de", type, &value), -18);
        EXPECT_EQ(value.vt, VT_EMPTY);
    }
    EXPECT_EQ(UtilLocGetCountryInfo(L"DE", 0, nullptr), -18);
    EXPECT_EQ(UtilLocGetLanguageInfo(L"DE", 0, nullptr), -18);
}

TEST(CountryExports, List)
{
    BSTR list = SysAllocString(L"replaced");
    EXPECT_EQ(UtilLocGetCountryList(&list), 0);
    const std::wstring_view text(list, SysStringLen(list));
    std::vector<std::wstring_view> keys;
    for (std::size_t begin = 0, end; begin <= text.size(); begin = end + 1)
        keys.push_back(text.substr(begin, (end = std::min(text.find(L';', begin), text.size())) - begin));
    EXPECT_GT(keys.size(), 300u);
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    EXPECT_EQ(std::adjacent_find(keys.begin(), keys.end()), keys.end());
    for (const std::wstring_view key :
        {L"Germany*1031", L"Switzerland*4108", L"Ghana*2057", L"Lao Peoples's Democratic Republic"})
        EXPECT_NE(std::find(keys.begin(), keys.end(), key), keys.end()) << testing::PrintToString(key);
    SysFreeString(list);
    EXPECT_EQ(UtilLocGetCountryList(nullptr), 0);
}

TEST(CountryExports, ManyThreadsAtOnce)
{
    qxtest::RunInThreads(8,
        [](unsigned)
        {
            for (int round = 0; round < 200; ++round)
                EXPECT_EQ(Info(round % 2 == 0 ? L"Austria" : L"de-AT", QXUT_COUNTRY_LCID), "3079");
        });
}

// The tests of the command line program look up each country by its codes and names.
TEST(IsoCountries, Record)
{
    QxCountry country{};
    country.size = sizeof country;
    EXPECT_EQ(QxGetCountryByCode(L"Bolivia, Plurinational State of", &country), QXUT_ISO_COUNTRY_OK);
    EXPECT_STREQ(country.alpha2, L"BO");
    ASSERT_EQ(QxGetCountryByCode(L"mKd", &country), QXUT_ISO_COUNTRY_OK);
    EXPECT_EQ(country.size, sizeof country);
    EXPECT_STREQ(country.alpha3, L"MKD");
    EXPECT_STREQ(country.numeric, L"807");
    EXPECT_STREQ(country.currency, L"MKD");
    EXPECT_EQ(country.callingCode, 389);
    EXPECT_STREQ(country.name, L"North Macedonia");
    EXPECT_STREQ(country.officialName, L"Republic of North Macedonia");
    EXPECT_STREQ(country.nativeName,
        L"\u0421\u0435\u0432\u0435\u0440\u043D\u0430 \u041C\u0430\u043A\u0435\u0434\u043E\u043D\u0438\u0458\u0430");

    // Only success changes the record.
    for (const wchar_t* unknown : {L"", L"XX", L"XK", L"4", L"04", L"999", L"DEX", L"German", L"Germany*1031", L"+49",
             static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(QxGetCountryByCode(unknown, &country), QXUT_ISO_COUNTRY_UNKNOWN) << testing::PrintToString(unknown);
    EXPECT_STREQ(country.alpha2, L"MK");
    country.size = sizeof country - 1;
    EXPECT_EQ(QxGetCountryByCode(L"DE", &country), QXUT_ISO_COUNTRY_BAD_RECORD);
    EXPECT_STREQ(country.alpha2, L"MK");
    EXPECT_EQ(QxGetCountryByCode(L"DE", nullptr), QXUT_ISO_COUNTRY_BAD_RECORD);
}

} // namespace
