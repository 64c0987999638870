// The folder below /dev/shm for what the running processes of a user share: named mappings and the session of event
// tracing. Nobody else has access, and nothing in it outlives the machine's session.
#pragma once

#include "base/descriptor.h"

#include <string>
#include <string_view>

#include <sys/types.h>

namespace qxplatform
{

// The longest file name that UserFolderName returns.
inline constexpr std::size_t kLongestUserFolderName = 200;

// Opens the folder, creating it if necessary. Empty with errno on failure: EACCES if another user created the folder,
// or if others have access to it.
Descriptor OpenUserFolder();

// Returns the name of a file in the folder for an object with this name. `kind` separates the names of the different
// kinds of objects. Processes with different values of QXPLATFORM_HOME get different names, because they don't share
// any other state either. Empty if the name is too long.
std::string UserFolderName(std::string_view kind, std::u16string_view name);

// Opens a file of the folder, or creates it with O_CREAT, without following a link and without blocking. Empty with
// errno on failure: EACCES if it isn't a regular file, belongs to another user, or is accessible to others.
Descriptor OpenInUserFolder(const Descriptor& folder, const std::string& name, int flags);

// Files whose users hold a shared flock are alive. These functions are for such files.

enum class Liveness
{
    Held,    // a shared lock is now held through the descriptor
    Removed, // its users have ended; the name is removed, or has just been removed by another process
    Busy,    // another process is checking the file at this moment
};
Liveness HoldIfAlive(const Descriptor& folder, const std::string& name, int file);

// Ends the hold of the descriptor. Removes the name if no other descriptor holds the file.
void EndHold(const std::string& name, int file);

// Removes files of that kind whose users have ended without removing them.
void RemoveDeadFiles(const Descriptor& folder, std::string_view kind);

} // namespace qxplatform
