// Names and data in the buffers of callers.
#pragma once

#include "registry/open_key.h"

#include <string_view>

namespace qxplatform
{

// `size` is the buffer's with the terminator before and the name's without it after. ERROR_MORE_DATA if that doesn't
// fit, and then both stay as they were. Without a buffer nothing is copied.
LSTATUS CopyName(std::u16string_view name, LPWSTR buffer, LPDWORD size);

// Type and data, each if asked for. `size` is the buffer's before and the data's after. ERROR_MORE_DATA if the buffer
// is too small, and then only the size and the type are told; without a buffer as well, as a success.
LSTATUS CopyValue(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size);

FILETIME LastWriteTimeOf(HKEY handle);

} // namespace qxplatform
