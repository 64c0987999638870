// Which file names the system refuses.
#pragma once

namespace qx
{

class String;

// Looks at the last component of the path: false for an empty one, a device name in upper case with or without one
// extension, one with a character that no name may have, and one that ends in a blank or a dot.
bool IsFileNameAllowed(const String& path);

} // namespace qx
