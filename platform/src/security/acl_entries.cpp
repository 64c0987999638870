#include "security/acl_entries.h"

#include <algorithm>
#include <memory>
#include <type_traits>

#include <acl/libacl.h>

namespace qxplatform
{
namespace
{

struct FreeAcl
{
    void operator()(acl_t list) const { acl_free(list); }
};

using AclHolder = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeAcl>;

constexpr std::uint16_t kAllRights = ACL_READ | ACL_WRITE | ACL_EXECUTE;

AclEntry ReadEntry(acl_entry_t source)
{
    AclEntry entry;
    acl_tag_t tag = ACL_UNDEFINED_TAG;
    acl_permset_t rights = nullptr;
    acl_get_tag_type(source, &tag);
    acl_get_permset(source, &rights);
    entry.tag = static_cast<std::uint16_t>(tag);
    for (const unsigned right : {ACL_READ, ACL_WRITE, ACL_EXECUTE})
        if (acl_get_perm(rights, right) == 1)
            entry.rights = static_cast<std::uint16_t>(entry.rights | right);
    if (tag == ACL_USER || tag == ACL_GROUP)
        if (void* const id = acl_get_qualifier(source))
        {
            entry.id = *static_cast<id_t*>(id);
            acl_free(id);
        }
    return entry;
}

bool AddEntry(acl_t& list, const AclEntry& entry)
{
    acl_entry_t target = nullptr;
    acl_permset_t rights = nullptr;
    if (acl_create_entry(&list, &target) != 0 || acl_set_tag_type(target, entry.tag) != 0 ||
        acl_get_permset(target, &rights) != 0)
        return false;
    for (const unsigned right : {ACL_READ, ACL_WRITE, ACL_EXECUTE})
        if ((entry.rights & right) != 0)
            acl_add_perm(rights, right);
    const bool isNamed = entry.tag == ACL_USER || entry.tag == ACL_GROUP;
    return !isNamed || acl_set_qualifier(target, &entry.id) == 0;
}

AclEntry* Find(AclEntries& entries, std::uint16_t tag, id_t id = ACL_UNDEFINED_ID)
{
    const auto found = std::find_if(
        entries.begin(), entries.end(), [=](const AclEntry& entry) { return entry.tag == tag && entry.id == id; });
    return found == entries.end() ? nullptr : &*found;
}

// Returns true if the mask limits the entry, as it does for the owning group and all named entries.
bool IsMasked(const AclEntry& entry)
{
    return entry.tag == ACL_USER || entry.tag == ACL_GROUP || entry.tag == ACL_GROUP_OBJ;
}

void Withdraw(AclEntries& entries, unsigned rights)
{
    for (AclEntry& entry : entries)
        if (IsMasked(entry))
            entry.rights = static_cast<std::uint16_t>(entry.rights & ~rights);
}

// Adjusts the mask of a list to which the entry will be added, or creates the mask if it is needed.
void GrowMask(AclEntries& entries, const AclEntry& added)
{
    AclEntry* const mask = Find(entries, ACL_MASK);
    if (mask != nullptr)
    {
        Withdraw(entries, added.rights & ~mask->rights);
        mask->rights |= added.rights;
    }
    else if (added.tag != ACL_GROUP_OBJ)
    {
        const AclEntry* const group = Find(entries, ACL_GROUP_OBJ);
        const unsigned groupRights = group == nullptr ? 0 : group->rights;
        entries.push_back({ACL_MASK, static_cast<std::uint16_t>(groupRights | added.rights), ACL_UNDEFINED_ID});
    }
}

} // namespace

bool ReadAcl(const std::string& path, acl_type_t type, AclEntries& entries)
{
    const AclHolder list(acl_get_file(path.c_str(), type));
    if (!list)
        return false;
    acl_entry_t entry = nullptr;
    for (int next = ACL_FIRST_ENTRY; acl_get_entry(list.get(), next, &entry) == 1; next = ACL_NEXT_ENTRY)
        entries.push_back(ReadEntry(entry));
    return true;
}

bool WriteAcl(const std::string& path, acl_type_t type, const AclEntries& entries)
{
    acl_t list = acl_init(static_cast<int>(entries.size()));
    if (list == nullptr)
        return false;
    const bool isFilled =
        std::all_of(entries.begin(), entries.end(), [&list](const AclEntry& entry) { return AddEntry(list, entry); });
    const AclHolder holder(list); // only now, because adding entries may move the list
    return isFilled && acl_set_file(path.c_str(), type, list) == 0;
}

void SetEntry(AclEntries& entries, const AclEntry& entry)
{
    if (IsMasked(entry))
        GrowMask(entries, entry);
    if (AclEntry* const present = Find(entries, entry.tag, entry.id))
        present->rights = entry.rights;
    else
        entries.push_back(entry);
}

AclEntries DefaultsFrom(const AclEntries& entries)
{
    const auto mask =
        std::find_if(entries.begin(), entries.end(), [](const AclEntry& entry) { return entry.tag == ACL_MASK; });
    const unsigned limit = mask == entries.end() ? kAllRights : mask->rights;
    AclEntries defaults;
    for (AclEntry entry : entries)
        if (entry.tag == ACL_USER_OBJ || entry.tag == ACL_GROUP_OBJ || entry.tag == ACL_OTHER)
        {
            if (entry.tag == ACL_GROUP_OBJ)
                entry.rights = static_cast<std::uint16_t>(entry.rights & limit);
            defaults.push_back(entry);
        }
    return defaults;
}

} // namespace qxplatform
