// Where what is known of countries comes from: the system's locales and the library's own lists.
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

    // A LOCALE_ text of at most 99 characters; false if the system doesn't tell.
    virtual bool Info(LCID locale, LCTYPE type, String& text) const = 0;

    // The name such as "de-DE"; empty if the system has none.
    virtual String LocaleName(LCID locale) const = 0;

    // A row of the lists; empty for a number without one.
    virtual String Row(int id) const = 0;
};

// The running system, and the string resources of the library.
const clsCountrySource& SystemCountrySource();

// The rows of the list of names, from firstCountryName on: code, English name, registration code.
inline constexpr int kFirstCountryName = 101;

struct scCountryName
{
    String code;
    String name;
    String vehicleCode;
};

// False for the row that ends the list, or none.
bool ReadCountryName(const clsCountrySource& source, int id, scCountryName& row);

} // namespace qx
