// Countries by their ISO 3166-1 codes.
#include <qxut23/iso_countries.h>

#include "locale/iso_countries.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

using namespace qx;

std::int32_t QxGetCountryByCode(const QXWCHAR* code, QxCountry* country)
{
    if (!country || country->size < sizeof(QxCountry))
        return QXUT_ISO_COUNTRY_BAD_RECORD;
    const IsoCountry* const found = code ? FindIsoCountry(code) : nullptr;
    if (!found)
        return QXUT_ISO_COUNTRY_UNKNOWN;
    QxCountry filled{};
    filled.size = country->size;
    filled.callingCode = found->callingCode;
    std::copy(std::begin(found->alpha2), std::end(found->alpha2), filled.alpha2);
    std::copy(std::begin(found->alpha3), std::end(found->alpha3), filled.alpha3);
    std::copy(std::begin(found->numeric), std::end(found->numeric), filled.numeric);
    std::copy(std::begin(found->currency), std::end(found->currency), filled.currency);
    filled.name = found->name;
    filled.shortName = found->shortName;
    filled.officialName = found->officialName;
    filled.nativeName = found->nativeName;
    *country = filled;
    return QXUT_ISO_COUNTRY_OK;
}
