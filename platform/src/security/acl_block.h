// The block behind a PACL: the access lists of a file or folder, and its owner and group, which are needed to change
// the lists. Callers may copy a block or pass an ACL from elsewhere, so each block is checked before use.
#pragma once

#include "security/acl_entries.h"

#include <winnt.h>

#include <optional>
#include <vector>

namespace qxplatform
{

struct FileAcl
{
    bool isFolder = false;
    bool hasNewDefaults = false; // the default list is to be written too
    uid_t owner = 0;
    gid_t group = 0;
    AclEntries access;
    AclEntries defaults; // only of folders; may be empty
};

// Returns a block to be released with LocalFree, or null with the last error.
PACL MakeAclBlock(const FileAcl& acl);

// Returns nothing for blocks of another form.
std::optional<FileAcl> ReadAclBlock(const ACL* block);

} // namespace qxplatform
