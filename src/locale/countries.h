// Answers about countries and languages.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "locale/country_tables.h"
#include "locale/host_kind.h"

#include <windows.h>

namespace qx
{

// All answers come from tables that the first question loads; a load that fails isn't repeated. Whoever asks meanwhile
// waits for it.
class clsCountries
{
public:
    clsCountries(const clsCountrySource& source, HostKind host) : _source(source), _host(host) {}

    // All canonical keys, sorted, separated by ";".
    String List();

    // Of a country by any of its names; 0 or the empty text for what isn't known.
    LCID Locale(const String& name);
    int CallingCode(const String& name);
    String IsoCode(const String& name);
    String Currency(const String& name);
    int CodePage(const String& name);
    String EnglishName(const String& name);
    String NativeName(const String& name);

    // Of a language by its tag or code. For a tag whose region isn't known, and for a code of two letters, the language
    // without a region.
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

// Those of the running system.
clsCountries& Countries();

} // namespace qx
