#include <aclapi.h>

#include "base/fail.h"
#include "base/text.h"
#include "security/account.h"
#include "security/acl_block.h"

using namespace qxplatform;

namespace
{

// Converts rights of the system. Whoever may read a folder may also enter it, because on the system everyone may pass
// through folders.
std::uint16_t RightsFrom(DWORD permissions, bool isFolder)
{
    unsigned rights = 0;
    if ((permissions & (GENERIC_ALL | GENERIC_READ | FILE_READ_DATA)) != 0)
        rights |= isFolder ? ACL_READ | ACL_EXECUTE : ACL_READ;
    if ((permissions & (GENERIC_ALL | GENERIC_WRITE | FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0)
        rights |= ACL_WRITE;
    if ((permissions & (GENERIC_ALL | GENERIC_EXECUTE | FILE_EXECUTE)) != 0)
        rights |= ACL_EXECUTE;
    return static_cast<std::uint16_t>(rights);
}

AclEntry NamedEntry(const Account& account, std::uint16_t rights)
{
    return {static_cast<std::uint16_t>(account.isGroup ? ACL_GROUP : ACL_USER), rights, account.id};
}

// Returns the entry of an account. The file's owner and its group have entries without a name.
AclEntry EntryOnFile(const FileAcl& acl, const Account& account, std::uint16_t rights)
{
    if (!account.isGroup && account.id == acl.owner)
        return {ACL_USER_OBJ, rights, ACL_UNDEFINED_ID};
    if (account.isGroup && account.id == acl.group)
        return {ACL_GROUP_OBJ, rights, ACL_UNDEFINED_ID};
    return NamedEntry(account, rights);
}

// Sets the account's entry in the default list. The entry always names the account, even the folder's owner, because
// new files may belong to another user.
void SetDefaultEntry(FileAcl& acl, const Account& account, std::uint16_t rights)
{
    if (acl.defaults.empty())
        acl.defaults = DefaultsFrom(acl.access);
    SetEntry(acl.defaults, NamedEntry(account, rights));
    acl.hasNewDefaults = true;
}

// Applies a change to the lists. Returns an error code.
DWORD Apply(const EXPLICIT_ACCESS_W& change, FileAcl& acl)
{
    if (change.grfAccessMode != SET_ACCESS || change.Trustee.TrusteeForm != TRUSTEE_IS_NAME ||
        change.Trustee.pMultipleTrustee != nullptr ||
        (change.grfInheritance & ~DWORD{SUB_CONTAINERS_AND_OBJECTS_INHERIT}) != 0)
        return ERROR_NOT_SUPPORTED;
    if (change.Trustee.ptstrName == nullptr)
        return ERROR_NONE_MAPPED;
    const std::optional<Account> account = FindAccount(ToBytes(View(change.Trustee.ptstrName)));
    if (!account)
        return ERROR_NONE_MAPPED;
    const std::uint16_t rights = RightsFrom(change.grfAccessPermissions, acl.isFolder);
    const AclEntry entry = EntryOnFile(acl, *account, rights);
    // A group has the rights of all of its entries, so an old entry with its name must not remain.
    const AclEntry named = NamedEntry(*account, rights);
    if (entry.tag != named.tag)
        std::erase_if(acl.access, [&](const AclEntry& old) { return old.tag == named.tag && old.id == named.id; });
    SetEntry(acl.access, entry);
    if (acl.isFolder && change.grfInheritance != NO_INHERITANCE)
        SetDefaultEntry(acl, *account, rights);
    return ERROR_SUCCESS;
}

} // namespace

VOID WINAPI BuildExplicitAccessWithNameW(PEXPLICIT_ACCESS_W pExplicitAccess, LPWSTR pTrusteeName,
    DWORD AccessPermissions, ACCESS_MODE AccessMode, DWORD Inheritance)
{
    *pExplicitAccess = {};
    pExplicitAccess->grfAccessPermissions = AccessPermissions;
    pExplicitAccess->grfAccessMode = AccessMode;
    pExplicitAccess->grfInheritance = Inheritance;
    pExplicitAccess->Trustee.TrusteeForm = TRUSTEE_IS_NAME;
    pExplicitAccess->Trustee.ptstrName = pTrusteeName;
}

DWORD WINAPI SetEntriesInAclW(
    ULONG cCountOfExplicitEntries, PEXPLICIT_ACCESS_W pListOfExplicitEntries, PACL OldAcl, PACL* NewAcl)
{
    if (NewAcl == nullptr || (pListOfExplicitEntries == nullptr && cCountOfExplicitEntries != 0))
        return ERROR_INVALID_PARAMETER;
    *NewAcl = nullptr;
    if (OldAcl == nullptr)
        return ERROR_NOT_SUPPORTED;
    std::optional<FileAcl> acl = ReadAclBlock(OldAcl);
    if (!acl)
        return ERROR_INVALID_ACL;
    for (ULONG i = 0; i < cCountOfExplicitEntries; ++i)
        if (const DWORD error = Apply(pListOfExplicitEntries[i], *acl); error != ERROR_SUCCESS)
            return error;
    *NewAcl = MakeAclBlock(*acl);
    return *NewAcl == nullptr ? GetLastError() : DWORD{ERROR_SUCCESS};
}
