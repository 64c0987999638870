// The countries of ISO 3166-1, by any of their codes.
#pragma once

#include <cstdint>
#include <string_view>

namespace qx
{

struct IsoCountry
{
    wchar_t alpha2[3];
    wchar_t alpha3[4];
    wchar_t numeric[4]; // three digits
    wchar_t currency[4];
    std::int32_t callingCode;
    const wchar_t* name; // in everyday English
    const wchar_t* shortName;
    const wchar_t* officialName;
    const wchar_t* nativeName;
};

// Finds a country by its two-letter, three-letter or three-digit code, or by one of its English names, ignoring the case
// of A to Z. Returns null if there is no such country.
const IsoCountry* FindIsoCountry(std::wstring_view name);

} // namespace qx
