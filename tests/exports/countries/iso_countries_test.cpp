#include <qxut23/iso_countries.h>

#include <gtest/gtest.h>

#include <windows.h>

// The command line program is tested with each country by its codes and names.
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
