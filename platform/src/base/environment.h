// The process's environment variables.
#pragma once

#include <string>
#include <string_view>

namespace qxplatform
{

// The value of a variable by its exact name, empty if it isn't set.
std::string EnvironmentValue(std::string_view name);

} // namespace qxplatform
