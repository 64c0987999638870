// International calling codes.
#pragma once

#include <string_view>

namespace qxplatform
{

// Returns the code for an ISO 3166 country code or the number of a world region; 0 if there is none.
unsigned CallingCodeOf(std::string_view region);

} // namespace qxplatform
