// The messages of the system's error codes.
#pragma once

#include <minwindef.h>

#include <string_view>

namespace qxplatform
{

// Returns the published message text without the trailing line break, or an empty text if there is none. A COM result
// that contains a system error code has the message of that code.
std::string_view SystemMessage(DWORD code);

} // namespace qxplatform
