// Checks the targets of links in archives.
#pragma once

#include <cstddef>
#include <string_view>

namespace qx
{

// Returns true if a link that is `depth` folders below the top can't lead out of the top: the target is relative, ".."
// occurs only at its beginning, and not more than `depth` times. A ".." after a name is refused because the name may be
// a link itself, whose parent is elsewhere.
bool StaysInside(std::string_view target, std::size_t depth);

} // namespace qx
