// Finds out which users have a file on a server open, and with what access.
#pragma once

#include "core/text/string.h"
#include "module/late_libraries.h"

#include <cstdint>

namespace qx
{

struct FileUsers
{
    std::uint32_t access = 0; // PERM_FILE_READ, PERM_FILE_WRITE and PERM_FILE_CREATE of all users; 0 after a failure
    String users;             // separated by tabs
};

enum class FileUsersResult
{
    Done,          // also if the file isn't on a server
    NoConnections, // the connections of drives can't be listed
    NoAnswer       // the server doesn't list its files; `found` contains the users that it named before
};

FileUsersResult GetFileInfoAccess(const String& path, clsNetAPI32& network, FileUsers& found);

} // namespace qx
