// Which file names the system refuses.
#pragma once

namespace qx
{

class String;

// Looks at the last component of the path: false for an empty one, a device name in upper case with or without one
// extension, one with a character that no name may have, and one that ends in a blank or a dot.
bool IsFileNameAllowed(const String& path);

// Whether the system takes a file of this name, in whatever folder, for a device. Neither case counts, nor what follows
// the first dot, nor blanks in front of it: "aux .tar.gz" is one. For names from outside.
bool IsDeviceName(const String& name);

} // namespace qx
