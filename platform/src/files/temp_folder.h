// The temp folder, which on the system is the user's own and here may be everybody's, as /tmp is.
#pragma once

#include <string>

#include <sys/types.h>

namespace qxplatform
{

// Where temporary files go: the first of TMPDIR, TMP and TEMP that is set, else /tmp.
std::string TempFolder();

// The mode for a new file or folder. In a temp folder where everybody may make files it is for its user alone, as it is
// on the system, where the rights of the user's own temp folder are inherited.
mode_t ModeOfNew(const std::string& path, mode_t usual);

// Returns true if the descriptor is that of a temp folder where everybody may make files.
bool IsSharedTempFolder(int folder);

// Whether a name in such a folder is another user's. Root's count as another's too, and so do users' for root: who owns
// a folder can lay links in it.
bool IsTakenByAnother(const std::string& path);

} // namespace qxplatform
