// Shortcuts as objects.
#pragma once

#include <unknwn.h>

namespace qxplatform
{

// Returns an empty shortcut. Throws std::bad_alloc.
IUnknown* MakeShellLink();

} // namespace qxplatform
