// The process's environment variables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// The value of a variable by its exact name, empty if it isn't set.
std::string EnvironmentValue(std::string_view name);

// All variables, as "name=value".
std::vector<std::string> EnvironmentEntries();

} // namespace qxplatform
