// Security descriptors for the creation of objects.
#pragma once

#include <winnt.h>

EXTERN_C_START

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision)
    QXP(InitializeSecurityDescriptor);
// Without a list (a null pDacl), everyone has access, as far as the created object supports security. No object of the
// layer grants access to other users.
BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
    BOOL bDaclDefaulted) QXP(SetSecurityDescriptorDacl);

EXTERN_C_END
