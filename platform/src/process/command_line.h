// Splits a program's command line into arguments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// Applies the rules of the system's C programs: blanks separate, quotes group, and backslashes before a quote are
// halved. In the first argument, backslashes have no special meaning.
std::vector<std::u16string> SplitCommandLine(std::u16string_view line);

} // namespace qxplatform
