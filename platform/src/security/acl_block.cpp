#include "security/acl_block.h"

#include <winbase.h>

#include "base/fail.h"

#include <cstring>

namespace qxplatform
{
namespace
{

// Marks the layer's own blocks. The system has no such revision.
constexpr BYTE kRevision = 0x71;

struct Head
{
    ACL acl;
    std::uint16_t isFolder;
    std::uint16_t hasNewDefaults;
    std::uint32_t accessCount;
    std::uint32_t owner;
    std::uint32_t group;
};

static_assert(sizeof(AclEntry) == 8 && sizeof(Head) % alignof(AclEntry) == 0);

void Put(std::byte*& target, const AclEntries& entries)
{
    if (!entries.empty())
        std::memcpy(target, entries.data(), entries.size() * sizeof(AclEntry));
    target += entries.size() * sizeof(AclEntry);
}

AclEntries Take(const std::byte*& source, std::size_t count)
{
    AclEntries entries(count);
    if (count != 0)
        std::memcpy(entries.data(), source, count * sizeof(AclEntry));
    source += count * sizeof(AclEntry);
    return entries;
}

} // namespace

PACL MakeAclBlock(const FileAcl& acl)
{
    const std::size_t count = acl.access.size() + acl.defaults.size();
    const std::size_t size = sizeof(Head) + count * sizeof(AclEntry);
    if (size > 0xFFFF) // the size has 16 bits
    {
        Fail(ERROR_ALLOTTED_SPACE_EXCEEDED);
        return nullptr;
    }
    void* const block = LocalAlloc(LMEM_FIXED, size);
    if (block == nullptr)
        return nullptr;
    Head head{};
    head.acl = {kRevision, 0, static_cast<WORD>(size), static_cast<WORD>(count), 0};
    head.isFolder = acl.isFolder;
    head.hasNewDefaults = acl.hasNewDefaults;
    head.accessCount = static_cast<std::uint32_t>(acl.access.size());
    head.owner = acl.owner;
    head.group = acl.group;
    std::memcpy(block, &head, sizeof head);
    std::byte* entries = static_cast<std::byte*>(block) + sizeof head;
    Put(entries, acl.access);
    Put(entries, acl.defaults);
    return static_cast<PACL>(block);
}

std::optional<FileAcl> ReadAclBlock(const ACL* block)
{
    Head head{};
    if (block->AclRevision != kRevision || block->AclSize < sizeof head)
        return {};
    std::memcpy(&head, block, sizeof head);
    const std::size_t count = (head.acl.AclSize - sizeof head) / sizeof(AclEntry);
    if (head.acl.AceCount != count || head.accessCount > count)
        return {};
    const std::byte* entries = reinterpret_cast<const std::byte*>(block) + sizeof head;
    FileAcl acl{head.isFolder != 0, head.hasNewDefaults != 0, head.owner, head.group, {}, {}};
    acl.access = Take(entries, head.accessCount);
    acl.defaults = Take(entries, count - head.accessCount);
    return acl;
}

} // namespace qxplatform
