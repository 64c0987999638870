// The one line that a program is started with, and its arguments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// By the rules that C programs of the system take their arguments by: blanks part, quotes hold together, and
// backslashes before a quote count in pairs. The first argument knows no backslashes.
std::vector<std::u16string> SplitCommandLine(std::u16string_view line);

} // namespace qxplatform
