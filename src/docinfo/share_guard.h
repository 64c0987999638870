// Network shares that don't answer.
#pragma once

#include "core/text/string.h"

namespace qx
{

// The share of a path: "\\server\share", or an empty text if the path isn't on a share.
IString ShareOfPath(const String& path);

// Returns true if the share is known as unreachable, for the rest of the process. Unless `onlyLook`, an unknown share
// is asked first, which may take as long as the system waits for a server. Any thread may call it.
bool IsShareUnreachable(const IString& share, bool onlyLook);

} // namespace qx
