// Results of storage functions.
#pragma once

#include <objbase.h>

namespace qxplatform
{

// Returns the documented result for a system error code.
HRESULT StorageError(DWORD error);

} // namespace qxplatform
