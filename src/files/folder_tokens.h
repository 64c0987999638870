// Expands names between percent signs in folder paths.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Replaces environment variables, and shell folders from the registry ("Personal", "My Pictures", ...) for names that
// aren't environment variables. Unknown names are kept, with their percent signs.
String ExpandFolderTokens(const String& text);

} // namespace qx
