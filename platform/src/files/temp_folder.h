// The temp folder, which belongs to the user on the system but may be world-writable here, like /tmp.
#pragma once

#include <string>

#include <sys/types.h>

namespace qxplatform
{

// Returns the folder for temporary files: the first of TMPDIR, TMP and TEMP that is set, otherwise /tmp.
std::string TempFolder();

// Returns the mode for a new file or folder. In a world-writable temp folder it is accessible only to the user, as on
// the system, where the permissions of the user's temp folder are inherited.
mode_t ModeOfNew(const std::string& path, mode_t usual);

// Returns true if the descriptor refers to a temp folder that is world-writable.
bool IsSharedTempFolder(int folder);

// Returns true if a name in a world-writable temp folder belongs to another user. That includes root for ordinary
// users, and ordinary users for root, because the owner of a folder can put links in it.
bool IsTakenByAnother(const std::string& path);

} // namespace qxplatform
