// Tables of countries and languages, and look-ups in them.
#pragma once

#include "containers/skip_list.h"
#include "core/critical_section.h"
#include "core/text/string.h"
#include "locale/country_source.h"

#include <windows.h>

namespace qx
{

// A dictionary that several threads read. A look-up copies its key to the single key object, protected by the lock of
// the table.
template <class Key, class Value>
class clsCountryTable
{
public:
    // If the key already exists, its value is kept.
    void Insert(const String& key, const Value& value)
    {
        const clsCriticalSectionLock lock(_lock);
        _entries.Insert(Key(key), value);
    }

    // If the key already exists, its value is replaced.
    void Set(const String& key, const Value& value)
    {
        const clsCriticalSectionLock lock(_lock);
        _entries[Key(key)] = value;
    }

    bool Find(const String& key, Value& value) const
    {
        const clsCriticalSectionLock lock(_lock);
        _key = key;
        const Value* const found = _entries.Find(_key);
        if (found)
            value = *found;
        return found != nullptr;
    }

    template <class Visitor>
    void ForEach(Visitor visitor) const
    {
        const clsCriticalSectionLock lock(_lock);
        _entries.ForEach([&](const WCKeyValue<Key, Value>& entry) { visitor(entry.key, entry.value); });
    }

private:
    WCValSkipListDict<Key, Value> _entries;
    mutable Key _key;
    mutable clsCriticalSection _lock;
};

// A canonical key identifies a country and a language: English country name, "*", locale in decimal.
struct scCountryTables
{
    clsCountryTable<IString, String> aliasTable;     // any name of a country: canonical key
    clsCountryTable<IString, String> tagTable;       // language tag: canonical key
    clsCountryTable<String, String> displayTable;    // canonical key: English country name
    clsCountryTable<String, LCID> lcidTable;         // canonical key: locale
    clsCountryTable<String, int> callingCodeTable;   // canonical key: international calling code
    clsCountryTable<String, String> isoTable;        // canonical key: ISO 3166 code
    clsCountryTable<String, String> currencyTable;   // canonical key: currency
    clsCountryTable<String, int> codePageTable;      // canonical key: ANSI code page
    clsCountryTable<String, String> nativeNameTable; // canonical key: name in its own language
    clsCountryTable<IString, LCID> languageTable;    // language tag or code: locale
};

// Fills the tables. Data that the system lacks is missing from them.
void LoadCountryTables(scCountryTables& tables, const clsCountrySource& source);

String CanonicalKey(const String& country, LCID locale);

} // namespace qx
