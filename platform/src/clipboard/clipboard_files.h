// The session's clipboard on disk: a folder in the layer's home with one file for each format that has data, named by
// the format's number, and a file with the names of the registered formats. Other processes can therefore paste data
// even after the process that copied it has ended.
#pragma once

#include "base/descriptor.h"

#include <minwindef.h>

#include <string>
#include <string_view>

namespace qxplatform
{

// The functions fail like the system's: with FALSE, 0 or an empty result, and a last error.

// Locks the clipboard until the result is destroyed or the process ends. Empty with ERROR_ACCESS_DENIED if somebody
// else holds the lock.
Descriptor LockClipboard();

// Only the holder of the lock may call these. The data of a format is either replaced completely or unchanged.
BOOL StoreClipboardData(UINT format, std::string_view bytes);
BOOL RemoveClipboardData();
BOOL ReadClipboardData(UINT format, std::string& bytes);

bool HasClipboardData(UINT format);

// Returns the number of a format by its name, compared without regard to case. Registers the name if it is new.
UINT ClipboardFormatNumber(std::u16string_view name);

} // namespace qxplatform
