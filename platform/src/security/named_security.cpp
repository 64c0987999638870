#include <aclapi.h>

#include "base/fail.h"
#include "files/path.h"
#include "security/acl_block.h"

#include <cerrno>

#include <sys/stat.h>

using namespace qxplatform;

namespace
{

// Reads the owner and the access lists of a file or folder. Returns an error code.
DWORD ReadFileAcl(const std::string& path, FileAcl& acl)
{
    struct stat info
    {
    };
    if (stat(path.c_str(), &info) != 0)
        return PathError(errno, path);
    acl.isFolder = S_ISDIR(info.st_mode);
    acl.owner = info.st_uid;
    acl.group = info.st_gid;
    if (!ReadAcl(path, ACL_TYPE_ACCESS, acl.access) || (acl.isFolder && !ReadAcl(path, ACL_TYPE_DEFAULT, acl.defaults)))
        return PathError(errno, path);
    return ERROR_SUCCESS;
}

bool IsAccessListOfFile(SE_OBJECT_TYPE type, SECURITY_INFORMATION information)
{
    return type == SE_FILE_OBJECT && information == DACL_SECURITY_INFORMATION;
}

} // namespace

DWORD WINAPI GetNamedSecurityInfoW(LPCWSTR pObjectName, SE_OBJECT_TYPE ObjectType, SECURITY_INFORMATION SecurityInfo,
    PSID*, PSID*, PACL* ppDacl, PACL*, PSECURITY_DESCRIPTOR* ppSecurityDescriptor)
{
    if (pObjectName == nullptr || ppDacl == nullptr || ppSecurityDescriptor == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (!IsAccessListOfFile(ObjectType, SecurityInfo))
        return ERROR_NOT_SUPPORTED;
    const NativePath path = ToNative(pObjectName);
    if (path.IsEmpty())
        return ERROR_PATH_NOT_FOUND;
    FileAcl acl;
    if (const DWORD error = ReadFileAcl(path.text, acl); error != ERROR_SUCCESS)
        return error;
    // The descriptor consists of the list alone.
    const PACL block = MakeAclBlock(acl);
    if (block == nullptr)
        return GetLastError();
    *ppDacl = block;
    *ppSecurityDescriptor = block;
    return ERROR_SUCCESS;
}

DWORD WINAPI SetNamedSecurityInfoW(
    LPWSTR pObjectName, SE_OBJECT_TYPE ObjectType, SECURITY_INFORMATION SecurityInfo, PSID, PSID, PACL pDacl, PACL)
{
    if (pObjectName == nullptr)
        return ERROR_INVALID_PARAMETER;
    // On the system, no list means that everyone has all rights.
    if (!IsAccessListOfFile(ObjectType, SecurityInfo) || pDacl == nullptr)
        return ERROR_NOT_SUPPORTED;
    const std::optional<FileAcl> acl = ReadAclBlock(pDacl);
    if (!acl)
        return ERROR_INVALID_ACL;
    const NativePath path = ToNative(pObjectName);
    if (path.IsEmpty())
        return ERROR_PATH_NOT_FOUND;
    if (!WriteAcl(path.text, ACL_TYPE_ACCESS, acl->access) ||
        (acl->hasNewDefaults && !WriteAcl(path.text, ACL_TYPE_DEFAULT, acl->defaults)))
        return PathError(errno, path.text);
    return ERROR_SUCCESS;
}
