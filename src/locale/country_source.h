// The sources of the data on countries: the system's locales and the library's own lists.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

#include <windows.h>

namespace qx
{

class clsCountrySource
{
public:
    virtual ~clsCountrySource() = default;

    virtual WCValSList<LCID> Locales() const = 0;

    // Retrieves a LOCALE_ text of at most 99 characters. Returns false if the system doesn't have it.
    virtual bool Info(LCID locale, LCTYPE type, String& text) const = 0;

    // Returns the name of the locale, such as "de-DE", or an empty text if the system has none.
    virtual String LocaleName(LCID locale) const = 0;

    // Returns a row of the lists, or an empty text if there is no such row.
    virtual String Row(int id) const = 0;
};

// Returns the source that uses the running system and the library's string resources.
const clsCountrySource& SystemCountrySource();

// The rows of the list of names start at kFirstCountryName and contain the code, the English name and the vehicle
// registration code.
inline constexpr int kFirstCountryName = 101;

struct scCountryName
{
    String code;
    String name;
    String vehicleCode;
};

// Returns false if the row ends the list or doesn't exist.
bool ReadCountryName(const clsCountrySource& source, int id, scCountryName& row);

} // namespace qx
