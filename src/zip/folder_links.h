// Detects cycles of folder links.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns true if a link leads to `folder` or to a folder that contains it. Following it would never end.
bool LeadsBack(const String& link, const String& folder);

} // namespace qx
