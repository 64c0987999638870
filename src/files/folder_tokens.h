// Names between percent signs in the paths of folders.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Replaces environment variables, and what the environment doesn't know by the shell folders of that name ("Personal",
// "My Pictures", ...), which the system keeps in the registry. Other names stay as they are, with their signs.
String ExpandFolderTokens(const String& text);

} // namespace qx
