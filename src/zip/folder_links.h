// Folders that are links to folders.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Whether a link leads to `folder` or to one that holds it: who follows it walks in a circle.
bool LeadsBack(const String& link, const String& folder);

} // namespace qx
