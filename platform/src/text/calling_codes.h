// International calling codes.
#pragma once

#include <string_view>

namespace qxplatform
{

// By the ISO 3166 code of a country, or the number of a part of the world; 0 if there is none.
unsigned CallingCodeOf(std::string_view region);

} // namespace qxplatform
