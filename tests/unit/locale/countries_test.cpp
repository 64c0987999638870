// Merging the system's locales with the library's rows, and look-ups, on a simulated system.
#include "locale/countries.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <utility>

using namespace qx;

namespace
{

constexpr LCTYPE kName = 0; // of the locale

struct clsFakeSource : clsCountrySource
{
    WCValSList<LCID> Locales() const override
    {
        ++loads;
        WCValSList<LCID> list;
        for (const LCID locale : order)
            list.Append(locale);
        return list;
    }
    bool Info(LCID locale, LCTYPE type, String& text) const override
    {
        const auto entry = values.find({locale, type});
        if (entry != values.end())
            text = entry->second;
        return entry != values.end();
    }
    String LocaleName(LCID locale) const override
    {
        String name;
        Info(locale, kName, name);
        return name;
    }
    String Row(int id) const override { return rows.count(id) != 0 ? String(rows.at(id)) : String(); }

    void Add(LCID locale, std::initializer_list<const wchar_t*> texts)
    {
        constexpr LCTYPE kTypes[] = {LOCALE_SENGCOUNTRY, LOCALE_SISO3166CTRYNAME, LOCALE_ICOUNTRY,
            LOCALE_SABBREVCTRYNAME, LOCALE_SCOUNTRY, LOCALE_SNATIVECTRYNAME, LOCALE_SCURRENCY,
            LOCALE_IDEFAULTANSICODEPAGE, LOCALE_SISO639LANGNAME, kName};
        order.push_back(locale);
        const LCTYPE* type = kTypes;
        for (const wchar_t* text : texts)
            values[{locale, *type++}] = text;
    }

    std::vector<LCID> order;
    std::map<std::pair<LCID, LCTYPE>, const wchar_t*> values;
    std::map<int, const wchar_t*> rows;
    mutable int loads = 0;
};

clsFakeSource Europe()
{
    clsFakeSource source;
    source.Add(1031, {L"Germany", L"DE", L"49", L"DEU", L"Allemagne", L"Deutschland", L"€", L"1252", L"de", L"de-DE"});
    source.Add(1070, {L"Germany", L"DE", L"49", L"DEU", L"Allemagne", L"Nimska", L"€", L"1252", L"hsb", L"hsb-DE"});
    source.Add(3079, {L"Austria", L"AT", L"43", L"AUT", L"Autriche", L"Österreich", L"€", L"1252", L"de", L"de-AT"});
    source.Add(1047, {L"Switzerland", L"CH", L"41", L"CHE", L"Suisse", L"Svizra", L"Fr.", L"1252", L"rm", L"rm-CH"});
    source.Add(2055, {L"Switzerland", L"CH", L"41", L"CHE", L"Suisse", L"Schweiz", L"CHF", L"1252", L"de", L"de-CH"});
    source.Add(1091, {L"Uzbekistan", L"UZ", L"998", L"UZB", L"", L"", L"", L"1254", L"uz", L"uz-Latn-UZ"});
    source.Add(2115, {L"Uzbekistan", L"UZ", L"998", L"UZB", L"", L"", L"", L"1251", L"uz", L"uz-Cyrl-UZ"});
    source.Add(1025, {L"Saudi Arabia", L"SA", L"966", L"SAU", L"", L"", L"", L"1256", L"ar", L"ar-SA"});
    source.rows = {{101, L"DE=Germany=D"}, {102, L"AT=Austria=A"}, {103, L"CH=Switzerland=CH"}, {104, L"AQ=Antarctica"},
        {105, L"XX=Oesterreich=A"}, {106, L"-"}, {107, L"FR=France=F"},
        {400, L"Ghana*2057:NativeName=Republic of Ghana;CallingCode=233;ISO3166=GH/GHA;LanguageCode=en-gh;"
              L"Currency=cedi;ANSICP=1252"},
        {402, L"Laos*????:NativeName=Lao;CallingCode=856;ISO3166=LA/LAO;LanguageCode=?;Currency=?kip"},
        {403, L"Nowhere*66567:LanguageCode=de-nw;Unknown=1;=;;ISO3166"}, {404, L"-"}, {405, L"Mali*1036:ISO3166=ML"}};
    return source;
}

using Resolved = std::pair<const wchar_t*, LCID>;

// Returns all data of a country: English and native name, ISO code, calling code, currency, code page.
String Told(clsCountries& countries, const wchar_t* name)
{
    return String(String::kFormatted, L"%s, %s, %s, %d, %s, %d", countries.EnglishName(name).Text(),
        countries.NativeName(name).Text(), countries.IsoCode(name).Text(),
        static_cast<int>(countries.CallingCode(name)), countries.Currency(name).Text(),
        static_cast<int>(countries.CodePage(name)));
}

TEST(Countries, AreFoundByEveryNameWithTheirValues)
{
    const clsFakeSource source = Europe();
    clsCountries countries(source, HostKind::Other);
    constexpr Resolved kCases[] = {{L"Germany", 1031}, {L"DEU", 1031}, {L"DE", 1031}, {L"49", 1031},
        {L"Deutschland", 1031}, {L"1031", 1031}, {L"0x0407", 1031}, {L"Germany*1031", 1031}, {L"GERMANY", 1031},
        {L"Allemagne", 1031}, {L"D", 1031}, {L"de", 1031}, // an ISO code takes precedence over a language
        {L"Germany*1070", 1070}, {L"1070", 1070}, {L"hsb", 1070},
        {L"Nimska", 0}, // plain names refer to the preferred locale
        {L"de-AT", 3079}, {L"DE-at", 3079}, {L"A", 3079}, {L"Oesterreich", 0}, {L"CH", 2055}, {L"rm-CH", 1047},
        {L"Schweiz", 2055}, // preferred by its country code
        {L"UZ", 1091}, {L"uz-Cyrl-UZ", 2115}, {L"uz", 1091}, {L"ar", 1025}, {L"Ghana*2057", 2057}, {L"GH", 2057},
        {L"gha", 2057}, {L"2057", 2057}, {L"0x0809", 2057}, {L"Republic of Ghana", 2057}, {L"en-GH", 2057},
        {L"Ghana", 0}, {L"Nowhere*66567", 1031}, // the number is truncated to 16 bits
        {L"AQ", 0}, {L"FR", 0}, {L"ML", 0}, {L"", 0}, {L"Germany*", 0}, {L"?", 0}};
    for (const auto& [name, locale] : kCases)
        EXPECT_EQ(countries.Locale(name), locale) << testing::PrintToString(name);

    constexpr std::pair<const wchar_t*, const wchar_t*> kValues[] = {
        {L"Autriche", L"Austria, Österreich, AT, 43, €, 1252"},
        // The values of a country belong to its preferred locale only. The name from its row goes to the country's
        // first key, here Switzerland*1047.
        {L"rm-CH", L"Switzerland, , CH, 0, , 1252"}, {L"hsb-DE", L", , DE, 0, , 1252"},
        {L"aq", L"Antarctica, , , 0, , 0"},                         // only from the row
        {L"fr", L", , , 0, , 0"}, {L"", L", , , 0, , 0"},           // past the end of the rows
        {L"GH", L"Ghana, Republic of Ghana, GHA, 233, cedi, 1252"}, // the last one of the codes
        {L"Lao", L"Laos, Lao, LAO, 856, , 0"}}; // a key without a number, and a value with a question mark
    for (const auto& [name, told] : kValues)
        EXPECT_STREQ(Told(countries, name), told) << testing::PrintToString(name);
    EXPECT_EQ(countries.List(),
        L"Austria*3079;Germany*1031;Germany*1070;Ghana*2057;Laos;Nowhere*66567;Saudi Arabia*1025;Switzerland*1047;"
        L"Switzerland*2055;Uzbekistan*1091;Uzbekistan*2115");
    EXPECT_EQ(source.loads, 1);
}

TEST(Countries, RowsWinOverTheSystem)
{
    clsFakeSource source = Europe();
    source.rows[402] = L"Austria*3079:NativeName=Ostarrichi;ISO3166=AT/AUT;CallingCode=1;Currency=Schilling;ANSICP=850";
    source.rows[403] = L"Bavaria*1031:ISO3166=DE;LanguageCode=de-de";
    clsCountries countries(source, HostKind::Other);
    EXPECT_STREQ(Told(countries, L"43"), L"Austria, Ostarrichi, AUT, 1, Schilling, 850");
    for (const wchar_t* name : {L"1031", L"0x0407", L"DE", L"de-DE"})
        EXPECT_EQ(countries.EnglishName(name), L"Bavaria") << testing::PrintToString(name);
    EXPECT_EQ(countries.EnglishName(L"Deutschland"), L"Germany");
    EXPECT_EQ(countries.Language(L"de-DE"), LCID{1031}) << "languages stay";
}

TEST(Countries, OneProgramHasNoLanguagesButVehicles)
{
    const clsFakeSource source = Europe();
    clsCountries countries(source, HostKind::Vtz);
    EXPECT_EQ(countries.Locale(L"de-AT"), LCID{3079});
    EXPECT_EQ(countries.Locale(L"hsb"), LCID{0});
    EXPECT_EQ(countries.Locale(L"de"), LCID{1031}) << "the ISO code";
    EXPECT_EQ(countries.EnglishName(L"ZW"), L"Zimbabwe");
    EXPECT_EQ(countries.EnglishName(L"AX"), L"Åland Islands");
    for (const wchar_t* name : {L"cdn", L"CDNX", L"ZZ", L"0", L""})
        EXPECT_EQ(countries.EnglishName(name), L"") << testing::PrintToString(name);
    EXPECT_EQ(clsCountries(source, HostKind::Hqd).EnglishName(L"CDN"), L"");

    EXPECT_EQ(HostKindByName(L"VTZ"), HostKind::Vtz);
    EXPECT_EQ(HostKindByName(L"hqd"), HostKind::Hqd);
    EXPECT_EQ(HostKindByName(L"hqd2"), HostKind::Other);
    EXPECT_EQ(HostKindByName(L""), HostKind::Other);
}

TEST(Countries, Languages)
{
    const clsFakeSource source = Europe();
    clsCountries countries(source, HostKind::Vtz);
    constexpr Resolved kCases[] = {{L"de-DE", 1031}, {L"DE-at", 3079}, {L"de", 7}, {L"De", 7}, {L"de-XX", 7},
        {L"de-XX-YY", 7}, {L"hsb", 1070}, {L"hsb-XX", 0x2e}, {L"uz-UZ", 1091}, {L"uz-Latn-UZ", 1091}, {L"uz", 0x43},
        {L"ar", 1}, {L"en-gh", 2057}, {L"en", 9}, {L"de-nw", 1031}, {L"xx", 0}, {L"xx-DE", 0}, {L"-DE", 0}, {L"", 0},
        {L"Germany", 0}};
    for (const auto& [name, locale] : kCases)
        EXPECT_EQ(countries.Language(name), locale) << testing::PrintToString(name);
}

// Only the values that the system doesn't provide are missing.
TEST(Countries, WithoutSomeValues)
{
    // The missing type, a name, its data, the language of "de-AT".
    constexpr std::tuple<LCTYPE, const wchar_t*, const wchar_t*, LCID> kCases[] = {
        {LOCALE_SISO3166CTRYNAME, L"Austria", L", , , 0, , 0", 7},
        {LOCALE_SISO3166CTRYNAME, L"3079", L"Austria, , , 0, , 1252", 7},
        {LOCALE_SENGCOUNTRY, L"AT", L"Austria, , , 0, , 0", 7}, {LOCALE_SENGCOUNTRY, L"3079", L", , , 0, , 0", 7},
        {LOCALE_ICOUNTRY, L"43", L", , , 0, , 0", 3079},
        {LOCALE_ICOUNTRY, L"AUT", L"Austria, Österreich, AT, 0, €, 1252", 3079},
        {LOCALE_SNATIVECTRYNAME, L"Österreich", L", , , 0, , 0", 3079},
        {LOCALE_IDEFAULTANSICODEPAGE, L"AT", L"Austria, Österreich, AT, 43, €, 0", 3079}};
    for (const auto& [missing, name, told, language] : kCases)
    {
        clsFakeSource source = Europe();
        source.values.erase({3079, missing});
        clsCountries countries(source, HostKind::Other);
        EXPECT_STREQ(Told(countries, name), told) << missing;
        EXPECT_EQ(countries.Language(L"de-AT"), language) << missing;
    }

    // Without locale names the tag is composed of the codes, and a language alone is not a country name.
    clsFakeSource nameless = Europe();
    std::erase_if(nameless.values, [](const auto& value) { return value.first.second == kName; });
    clsCountries countries(nameless, HostKind::Other);
    EXPECT_EQ(countries.Locale(L"de-AT"), LCID{3079});
    EXPECT_EQ(countries.Locale(L"hsb"), LCID{0});
    EXPECT_EQ(countries.Language(L"hsb"), LCID{1070});
    EXPECT_EQ(countries.Language(L"de"), LCID{7});

    const clsFakeSource nothing;
    clsCountries none(nothing, HostKind::Other);
    EXPECT_EQ(none.List(), L"");
    EXPECT_EQ(none.Locale(L"DE"), LCID{0});
    EXPECT_EQ(nothing.loads, 1) << "an empty load isn't repeated";
}

} // namespace
