// The texts of the system's error codes.
#pragma once

#include <minwindef.h>

#include <string_view>

namespace qxplatform
{

// As published, without the line's end that the system puts behind each; empty for a code that has none here. A COM
// result that carries a system error code has that code's text.
std::string_view SystemMessage(DWORD code);

} // namespace qxplatform
