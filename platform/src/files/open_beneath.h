// Opening an entry of a folder by the folder's descriptor, so that no other process can redirect the open.
#pragma once

#include <string>

#include <sys/types.h>

namespace qxplatform
{

// Opens a single name in the folder and never follows a link. O_PATH opens a link itself; otherwise a link is an error
// (ELOOP). Returns the descriptor, or -1 with errno.
int OpenBeneath(int folder, const std::string& name, int flags, mode_t mode);

} // namespace qxplatform
