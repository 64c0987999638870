// The two forms of a path on a share: below the drive connected with it, and \\server\share\...
#pragma once

#include "core/text/string.h"

namespace qx
{

// Both functions normalise the path. On failure they return false and leave `result` unchanged.

// Converts a path on a share that a drive is connected with to the drive's form. Other paths are only normalised.
bool EnsureLocalPath(const String& path, String& result);

// Converts a path with a drive letter to the form of its share, and fails if the drive isn't connected with one. Other
// paths are only normalised.
bool EnsureUNCPath(const String& path, String& result);

} // namespace qx
