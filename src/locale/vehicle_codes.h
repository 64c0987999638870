// Looks up countries by the distinguishing signs of their vehicles.
#pragma once

#include <string_view>

namespace qx
{

// Returns the English name of a country in UTF-8, or an empty text for an unknown code. Codes are case-sensitive.
std::string_view CountryOfVehicleCode(std::string_view code);

} // namespace qx
