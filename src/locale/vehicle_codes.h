// Countries by the codes that vehicles show abroad.
#pragma once

#include <string_view>

namespace qx
{

// The English name of a country in UTF-8, empty for a code that no country has. Case counts.
std::string_view CountryOfVehicleCode(std::string_view code);

} // namespace qx
