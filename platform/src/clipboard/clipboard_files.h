// The session's clipboard on disk: a folder below the layer's own, with a file for each format that holds data, named
// by the format's number, and the names of the registered formats. So what one process copies another can paste, also
// when the first one is gone.
#pragma once

#include "base/descriptor.h"

#include <minwindef.h>

#include <string>
#include <string_view>

namespace qxplatform
{

// The functions fail like the system's: FALSE, 0 or an empty result, and the last error.

// Holds the clipboard against all others, until it is destroyed or the process ends. Empty with ERROR_ACCESS_DENIED if
// someone else has it.
Descriptor LockClipboard();

// For the one who has the lock. A format's data are replaced at once, or stay as they are.
BOOL StoreClipboardData(UINT format, std::string_view bytes);
BOOL RemoveClipboardData();
BOOL ReadClipboardData(UINT format, std::string& bytes);

bool HasClipboardData(UINT format);

// The number of a format by its name, which is compared without case; a new one if nobody has asked for that name yet.
UINT ClipboardFormatNumber(std::u16string_view name);

} // namespace qxplatform
