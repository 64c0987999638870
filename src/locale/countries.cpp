#include "locale/countries.h"

#include "containers/skip_list.h"
#include "core/forever.h"
#include "locale/vehicle_codes.h"

#include <string_view>

namespace qx
{

namespace
{

constexpr LCID kLanguageBits = 0x3FF;

String FromUtf8(std::string_view text)
{
    String wide;
    wide.SetCodePage(CP_UTF8);
    wide.Assign(text.data(), 0, text.size());
    wide.SetCodePage(DefaultCodePage());
    return wide;
}

} // namespace

void clsCountries::EnsureLoaded()
{
    if (_isLoaded)
        return;
    _isLoaded = true;
    LoadCountryTables(_tables, _source);
}

bool clsCountries::Resolve(const String& name, String& key) const
{
    if (name.IsEmpty())
        return false;
    if (_tables.aliasTable.Find(name, key))
        return true;
    // For this program a single word is always the name of a country, never a language.
    if (_host == HostKind::Vtz && name.View().find(L'-') == std::wstring_view::npos)
        return false;
    return _tables.tagTable.Find(name, key);
}

template <class Table, class Value>
Value clsCountries::Find(const Table& table, const String& name, Value missing)
{
    const clsCriticalSectionLock lock(_lock);
    EnsureLoaded();
    String key;
    Value value{};
    return Resolve(name, key) && table.Find(key, value) ? value : missing;
}

String clsCountries::List()
{
    const clsCriticalSectionLock lock(_lock);
    EnsureLoaded();
    WCValSkipListSet<String> keys;
    _tables.aliasTable.ForEach([&keys](const String&, const String& key) { keys.Insert(key); });
    String list;
    for (const String& key : keys)
        list.AppendWithSeparator(L';', key);
    return list;
}

LCID clsCountries::Locale(const String& name)
{
    return Find(_tables.lcidTable, name, LCID{0});
}

int clsCountries::CallingCode(const String& name)
{
    return Find(_tables.callingCodeTable, name, 0);
}

String clsCountries::IsoCode(const String& name)
{
    return Find(_tables.isoTable, name, String());
}

String clsCountries::Currency(const String& name)
{
    return Find(_tables.currencyTable, name, String());
}

int clsCountries::CodePage(const String& name)
{
    return Find(_tables.codePageTable, name, 0);
}

String clsCountries::EnglishName(const String& name)
{
    String english = Find(_tables.displayTable, name, String());
    if (english.IsEmpty())
        english = NameByIsoCode(name);
    if (english.IsEmpty() && _host == HostKind::Vtz)
        english = NameByVehicleCode(name);
    return english;
}

String clsCountries::NativeName(const String& name)
{
    return Find(_tables.nativeNameTable, name, String());
}

String clsCountries::NameByIsoCode(const String& code) const
{
    const IString wanted(code);
    scCountryName row;
    for (int id = kFirstCountryName; ReadCountryName(_source, id, row); ++id)
        if (wanted == row.code)
            return row.name;
    return String();
}

String clsCountries::NameByVehicleCode(const String& code) const
{
    return FromUtf8(CountryOfVehicleCode(code.NarrowText()));
}

LCID clsCountries::Language(const String& name)
{
    const clsCriticalSectionLock lock(_lock);
    EnsureLoaded();
    LCID locale = 0;
    if (_tables.languageTable.Find(name, locale))
        return name.Length() == 2 ? locale & kLanguageBits : locale;
    const std::size_t hyphen = name.View().find(L'-');
    if (hyphen == std::wstring_view::npos || !_tables.languageTable.Find(name.Left(hyphen), locale))
        return 0;
    return locale & kLanguageBits;
}

clsCountries& Countries()
{
    static clsCountries& countries = MakeForever<clsCountries>(SystemCountrySource(), ThisHostKind());
    return countries;
}

} // namespace qx
