// Checks for file names that the system rejects.
#pragma once

namespace qx
{

class String;

// Checks the last component of the path. Returns false if it is empty, a device name in upper case with at most one
// extension, contains a character that isn't allowed in names, or ends in a blank or dot.
bool IsFileNameAllowed(const String& path);

// Returns true if the system treats a file of this name as a device in any folder. Case, everything after the first
// dot, and blanks before that dot are ignored: "aux .tar.gz" is a device. Use it for names from untrusted sources.
bool IsDeviceName(const String& name);

} // namespace qx
