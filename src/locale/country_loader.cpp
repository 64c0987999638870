// Merges the data on countries: first from the system's locales, then from the library's own rows, which override it.

#include "locale/country_tables.h"

#include <windows.h>

#include <wchar.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace qx
{

namespace
{

constexpr LCID kMainRegion = 0x400;
constexpr LCID kRegionBits = 0xFC00;

bool IsMainRegion(LCID locale)
{
    return (locale & kRegionBits) == kMainRegion;
}

// For countries with several locales on the system, the locale that the plain country names refer to.
struct PreferredLocale
{
    const wchar_t* country;
    LCID locale;
};
constexpr PreferredLocale kPreferredLocales[] = {{L"AZ", 1068}, {L"BA", 5146}, {L"BE", 2060}, {L"BO", 16394},
    {L"CA", 4105}, {L"CH", 2055}, {L"CL", 13322}, {L"EC", 12298}, {L"ES", 1034}, {L"FI", 1035}, {L"GB", 2057},
    {L"IE", 6153}, {L"IN", 1081}, {L"LU", 1134}, {L"MQ", 1036}, {L"NO", 2068}, {L"NZ", 5129}, {L"PE", 10250},
    {L"PH", 13321}, {L"RU", 1049}, {L"SE", 1053}, {L"SP", 6170}, {L"SY", 1114}, {L"UZ", 1091}, {L"ZA", 7177}};

using LocalesOfCountry = WCValSkipList<LCID>; // in ascending order

LCID ChoosePreferred(const String& country, const LocalesOfCountry& locales)
{
    const LCID first = *locales.begin();
    if (locales.Count() == 1)
        return first;
    for (const PreferredLocale& row : kPreferredLocales)
        if (country == row.country)
            return row.locale;
    for (const LCID locale : locales)
        if (IsMainRegion(locale))
            return locale;
    return first;
}

String Decimal(LCID locale)
{
    return String(String::kFormatted, L"%u", static_cast<unsigned>(locale));
}

String Hexadecimal(LCID locale)
{
    return String(String::kFormatted, L"0x%04x", static_cast<unsigned>(locale));
}

// Returns the text up to the separator, or all of it, and stores the part after the separator in `behind`.
String CutAt(const String& text, wchar_t separator, String& behind)
{
    const std::size_t position = text.View().find(separator);
    behind = position == std::wstring_view::npos ? String() : text.Mid(position + 1);
    return position == std::wstring_view::npos ? text : text.Left(position);
}

String FirstPart(const String& tag)
{
    String ignored;
    return CutAt(tag, L'-', ignored);
}

bool BeginsWithDigit(const String& text)
{
    return text[0] >= L'0' && text[0] <= L'9';
}

class Loader
{
public:
    Loader(scCountryTables& tables, const clsCountrySource& source) : _tables(tables), _source(source) {}

    void Run()
    {
        const WCValSList<LCID> locales = _source.Locales();
        ReadIsoNames();
        GroupByCountry(locales);
        for (const auto& country : _countries)
            AddCountry(country.key, ChoosePreferred(country.key, country.value));
        for (const LCID locale : locales)
            AddLocale(locale);
        AddResourceCountries();
        AddResourceNames();
    }

private:
    void ReadIsoNames()
    {
        scCountryName row;
        for (int id = kFirstCountryName; ReadCountryName(_source, id, row); ++id)
            _isoNames.Insert(row.code, row.name);
    }

    void GroupByCountry(const WCValSList<LCID>& locales)
    {
        for (const LCID locale : locales)
        {
            String country;
            if (_source.Info(locale, LOCALE_SISO3166CTRYNAME, country))
                _countries[country].Insert(locale);
        }
    }

    void InsertAlias(const String& alias, const String& key)
    {
        if (!alias.IsEmpty())
            _tables.aliasTable.Insert(alias, key);
    }

    void AddCountry(const String& country, LCID locale)
    {
        String name;
        if (!_source.Info(locale, LOCALE_SENGCOUNTRY, name))
            return;
        const String key = CanonicalKey(name, locale);
        InsertAlias(name, key);
        _tables.displayTable.Insert(key, name);
        if (const String* const isoName = _isoNames.Find(country))
            InsertAlias(*isoName, key);

        String text;
        if (_source.Info(locale, LOCALE_ICOUNTRY, text))
        {
            InsertAlias(text, key);
            _tables.callingCodeTable.Insert(key, _wtoi(text));
        }
        for (const LCTYPE type : {LOCALE_SABBREVCTRYNAME, LOCALE_SISO3166CTRYNAME, LOCALE_SCOUNTRY})
            if (_source.Info(locale, type, text))
                InsertAlias(text, key);
        if (_source.Info(locale, LOCALE_SNATIVECTRYNAME, text))
        {
            InsertAlias(text, key);
            _tables.nativeNameTable.Insert(key, text);
        }
        if (_source.Info(locale, LOCALE_SCURRENCY, text))
            _tables.currencyTable.Insert(key, text);
    }

    void AddLocale(LCID locale)
    {
        String country;
        if (!_source.Info(locale, LOCALE_SENGCOUNTRY, country))
            return;
        const String key = CanonicalKey(country, locale);
        InsertAlias(key, key);
        InsertAlias(Decimal(locale), key);
        InsertAlias(Hexadecimal(locale), key);
        _tables.lcidTable.Insert(key, locale);

        String iso;
        if (_source.Info(locale, LOCALE_SISO3166CTRYNAME, iso))
        {
            _tables.isoTable.Insert(key, iso);
            AddTags(locale, key, iso);
        }
        String codePage;
        if (_source.Info(locale, LOCALE_IDEFAULTANSICODEPAGE, codePage))
            _tables.codePageTable.Insert(key, _wtoi(codePage));
    }

    void AddTags(LCID locale, const String& key, const String& iso)
    {
        String name = _source.LocaleName(locale);
        if (!name.IsEmpty())
        {
            InsertTag(name, key, locale);
            if (IsMainRegion(locale))
                InsertTag(FirstPart(name), key, locale);
            if (name.Replace(L"Latn-", L"") > 0)
                _tables.languageTable.Insert(name, locale);
            return;
        }
        String language;
        if (!_source.Info(locale, LOCALE_SISO639LANGNAME, language))
            return;
        InsertTag(language + L"-" + iso, key, locale);
        if (IsMainRegion(locale))
            _tables.languageTable.Insert(language, locale);
    }

    void InsertTag(const String& tag, const String& key, LCID locale)
    {
        _tables.tagTable.Insert(tag, key);
        _tables.languageTable.Insert(tag, locale);
    }

    // Adds the countries of the library's rows. Row numbers may have gaps. The upper bound ends the list even if the
    // end mark is missing.
    void AddResourceCountries()
    {
        for (int id = kFirstCountry; id <= kLastCountry; ++id)
        {
            const String row = _source.Row(id);
            if (row == kEndOfRows)
                break;
            if (!row.IsEmpty())
                AddResourceCountry(row);
        }
    }

    void AddResourceCountry(const String& row)
    {
        String values;
        String number;
        String key = CutAt(row, L':', values);
        const String name = CutAt(key, L'*', number);
        LCID locale = 0;
        if (BeginsWithDigit(number))
        {
            locale = static_cast<LCID>(_wtoi(number)) & 0xFFFF;
            _tables.aliasTable.Set(Decimal(locale), key);
            _tables.aliasTable.Set(Hexadecimal(locale), key);
            _tables.lcidTable.Set(key, locale);
        }
        else
            key = name;
        _tables.aliasTable.Set(key, key);
        _tables.displayTable.Set(key, name);
        while (!values.IsEmpty())
        {
            String behind;
            String value;
            const String valueName = CutAt(CutAt(values, L';', behind), L'=', value);
            if (value.CharAt(0) != L'?')
                SetValue(key, locale, valueName, value);
            values = std::move(behind);
        }
    }

    void SetValue(const String& key, LCID locale, const String& name, const String& value)
    {
        if (name == L"NativeName")
        {
            SetAlias(value, key);
            _tables.nativeNameTable.Set(key, value);
        }
        else if (name == L"ISO3166")
            for (const String& code : value.Split(L'/'))
            {
                SetAlias(code, key);
                _tables.isoTable.Set(key, code);
            }
        else if (name == L"LanguageCode")
        {
            _tables.tagTable.Set(value, key);
            _tables.languageTable.Insert(value, locale);
            _tables.languageTable.Insert(FirstPart(value), locale);
        }
        else if (name == L"CallingCode")
            _tables.callingCodeTable.Set(key, _wtoi(value));
        else if (name == L"Currency")
            _tables.currencyTable.Set(key, value);
        else if (name == L"ANSICP")
            _tables.codePageTable.Set(key, _wtoi(value));
    }

    void SetAlias(const String& alias, const String& key)
    {
        if (!alias.IsEmpty())
            _tables.aliasTable.Set(alias, key);
    }

    void AddResourceNames()
    {
        const std::vector<std::pair<String, String>> keys = CanonicalAliases();
        scCountryName row;
        for (int id = kFirstCountryName; ReadCountryName(_source, id, row); ++id)
        {
            const IString beginning(row.name + L"*");
            const auto fits = [&, length = static_cast<int>(beginning.Length())](const String& key)
            {
                return beginning.Compare(key, length) == 0;
            };
            const auto found =
                std::find_if(keys.begin(), keys.end(), [&](const auto& entry) { return fits(entry.first); });
            if (found == keys.end())
                continue;
            // The codes become aliases of the key with the country's main language, if it is known.
            String key;
            if (!_tables.aliasTable.Find(row.name, key) || !fits(key))
                key = found->second;
            InsertAlias(row.code, key);
            if (!(IString(row.vehicleCode) == row.code))
                InsertAlias(row.vehicleCode, key);
            _tables.displayTable.Insert(found->second, row.name);
        }
    }

    // Returns the aliases that contain a "*", in order. Codes that are inserted while the rows are processed are not
    // among them.
    std::vector<std::pair<String, String>> CanonicalAliases() const
    {
        std::vector<std::pair<String, String>> keys;
        _tables.aliasTable.ForEach(
            [&keys](const String& alias, const String& key)
            {
                if (alias.View().find(L'*') != std::wstring_view::npos)
                    keys.emplace_back(alias, key);
            });
        return keys;
    }

    static constexpr int kFirstCountry = 400;
    static constexpr int kLastCountry = 520;
    static constexpr const wchar_t* kEndOfRows = L"-";

    scCountryTables& _tables;
    const clsCountrySource& _source;
    WCValSkipListDict<String, String> _isoNames;
    WCValSkipListDict<String, LocalesOfCountry> _countries;
};

} // namespace

String CanonicalKey(const String& country, LCID locale)
{
    return String(String::kFormatted, L"%s*%d", country.Text(), static_cast<int>(locale));
}

void LoadCountryTables(scCountryTables& tables, const clsCountrySource& source)
{
    Loader(tables, source).Run();
}

} // namespace qx
