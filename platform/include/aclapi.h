// Access lists of files and folders.
#pragma once

#include <accctrl.h>
#include <winnt.h>

EXTERN_C_START

// These functions return an error code. Lists and descriptors are released with LocalFree.

// Supports only the access list (DACL_SECURITY_INFORMATION) of an SE_FILE_OBJECT; anything else fails with
// ERROR_NOT_SUPPORTED.
DWORD WINAPI GetNamedSecurityInfoW(LPCWSTR pObjectName, SE_OBJECT_TYPE ObjectType, SECURITY_INFORMATION SecurityInfo,
    PSID* ppsidOwner, PSID* ppsidGroup, PACL* ppDacl, PACL* ppSacl, PSECURITY_DESCRIPTOR* ppSecurityDescriptor)
    QXP(GetNamedSecurityInfoW);
DWORD WINAPI SetNamedSecurityInfoW(LPWSTR pObjectName, SE_OBJECT_TYPE ObjectType, SECURITY_INFORMATION SecurityInfo,
    PSID psidOwner, PSID psidGroup, PACL pDacl, PACL pSacl) QXP(SetNamedSecurityInfoW);

// Stores the pointer to the name; the name isn't copied.
VOID WINAPI BuildExplicitAccessWithNameW(PEXPLICIT_ACCESS_W pExplicitAccess, LPWSTR pTrusteeName,
    DWORD AccessPermissions, ACCESS_MODE AccessMode, DWORD Inheritance) QXP(BuildExplicitAccessWithNameW);

// Supports only SET_ACCESS for accounts given by name, and only changes of a list that GetNamedSecurityInfoW returned.
// Other access modes, trustee forms or inheritance flags, and a null `OldAcl`, fail with ERROR_NOT_SUPPORTED.
DWORD WINAPI SetEntriesInAclW(ULONG cCountOfExplicitEntries, PEXPLICIT_ACCESS_W pListOfExplicitEntries, PACL OldAcl,
    PACL* NewAcl) QXP(SetEntriesInAclW);

EXTERN_C_END
