// Look-ups of countries and languages.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "locale/country_tables.h"
#include "locale/host_kind.h"

#include <windows.h>

namespace qx
{

// All results come from tables that are loaded by the first look-up. A failed load isn't repeated. Look-ups on other
// threads wait for the load.
class clsCountries
{
public:
    clsCountries(const clsCountrySource& source, HostKind host) : _source(source), _host(host) {}

    // Returns all canonical keys, sorted and separated by ";".
    String List();

    // Look up a country by any of its names. Return 0 or the empty text if it is unknown.
    LCID Locale(const String& name);
    int CallingCode(const String& name);
    String IsoCode(const String& name);
    String Currency(const String& name);
    int CodePage(const String& name);
    String EnglishName(const String& name);
    String NativeName(const String& name);

    // Looks up a language by its tag or code. For a tag whose region isn't known, and for a two-letter code, returns
    // the language without a region.
    LCID Language(const String& name);

private:
    void EnsureLoaded();
    bool Resolve(const String& name, String& key) const;
    String NameByIsoCode(const String& code) const;
    String NameByVehicleCode(const String& code) const;

    template <class Table, class Value>
    Value Find(const Table& table, const String& name, Value missing);

    const clsCountrySource& _source;
    HostKind _host;
    clsCriticalSection _lock;
    bool _isLoaded = false;
    scCountryTables _tables;
};

// Returns the look-ups based on the running system.
clsCountries& Countries();

} // namespace qx
