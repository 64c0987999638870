// Remembers which network shares can't be reached.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns the share of a path, "\\server\share", or an empty text if the path isn't on a share.
IString ShareOfPath(const String& path);

// Returns true if the share is known to be unreachable, which doesn't change for the rest of the process. Unless
// `onlyLook` is true, an unknown share is contacted first, which may take as long as the system waits for a server. Any
// thread may call it.
bool IsShareUnreachable(const IString& share, bool onlyLook);

} // namespace qx
