// The process's environment variables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// Returns the value of a variable by its exact name, or an empty text if it isn't set.
std::string EnvironmentValue(std::string_view name);

// Returns all variables as "name=value".
std::vector<std::string> EnvironmentEntries();

} // namespace qxplatform
