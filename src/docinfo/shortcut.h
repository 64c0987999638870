// Resolves shortcuts to documents.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns the path of a shortcut's target, or an empty text if the system can't read the shortcut. The target may be a
// shortcut itself, and it need not exist.
String TargetOfShortcut(const String& path);

} // namespace qx
