// The entries of one POSIX access list, and the change of one of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <sys/acl.h>
#include <sys/types.h>

namespace qxplatform
{

struct AclEntry
{
    std::uint16_t tag = ACL_UNDEFINED_TAG; // ACL_USER_OBJ, ACL_USER, ...
    std::uint16_t rights = 0;              // ACL_READ, ACL_WRITE and ACL_EXECUTE
    id_t id = ACL_UNDEFINED_ID;            // of ACL_USER and ACL_GROUP
};

using AclEntries = std::vector<AclEntry>;

// These two return false and set errno on failure. A folder without a default list has no entries of that type.
bool ReadAcl(const std::string& path, acl_type_t type, AclEntries& entries);
bool WriteAcl(const std::string& path, acl_type_t type, const AclEntries& entries);

// Sets the rights of an entry, adding it if necessary. The mask grows as far as the entry needs it. Rights that only
// the old mask withheld from other entries are removed from them, so that nobody else gains any.
void SetEntry(AclEntries& entries, const AclEntry& entry);

// Returns a default list without named entries, which grants new files the effective rights of the given list.
AclEntries DefaultsFrom(const AclEntries& entries);

} // namespace qxplatform
