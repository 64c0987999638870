// Data in the buffers of callers.
#pragma once

#include "registry/open_key.h"

namespace qxplatform
{

// Type and data, each if asked for. `size` is the buffer's before and the data's after. ERROR_MORE_DATA if the buffer
// is too small, and then only the size and the type are told; without a buffer as well, as a success.
LSTATUS CopyValue(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size);

} // namespace qxplatform
