// The block behind a PACL: the lists of a file or folder, with what is needed to change them. Callers may free or copy
// it, and may pass something else instead, so it is checked before use.
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
