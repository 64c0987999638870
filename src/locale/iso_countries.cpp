#include "locale/iso_countries.h"

#include "locale/iso_country_table.h"

#include <algorithm>
#include <iterator>

namespace qx
{
namespace
{

constexpr wchar_t UpperLetter(wchar_t c)
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - (L'a' - L'A')) : c;
}

bool EqualsCountryName(std::wstring_view a, std::wstring_view b)
{
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [](wchar_t c, wchar_t d) { return UpperLetter(c) == UpperLetter(d); });
}

template <class Condition>
const IsoCountry* FindCountry(Condition condition)
{
    const IsoCountry* const found = std::find_if(std::begin(kIsoCountries), std::end(kIsoCountries), condition);
    return found != std::end(kIsoCountries) ? found : nullptr;
}

} // namespace

const IsoCountry* FindIsoCountry(std::wstring_view name)
{
    if (name.size() == 2)
        return FindCountry([=](const IsoCountry& country) { return EqualsCountryName(country.alpha2, name); });
    if (name.size() == 3)
        return FindCountry([=](const IsoCountry& country)
            { return EqualsCountryName(country.alpha3, name) || country.numeric == name; });
    return FindCountry(
        [=](const IsoCountry& country)
        {
            return EqualsCountryName(country.name, name) || EqualsCountryName(country.shortName, name) ||
                   EqualsCountryName(country.officialName, name);
        });
}

} // namespace qx
