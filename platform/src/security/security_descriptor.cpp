#include <securitybaseapi.h>

#include "base/fail.h"

using namespace qxplatform;

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision)
{
    if (dwRevision != SECURITY_DESCRIPTOR_REVISION)
        return Fail(ERROR_UNKNOWN_REVISION);
    auto* const descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    *descriptor = {};
    descriptor->Revision = SECURITY_DESCRIPTOR_REVISION;
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(
    PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl, BOOL bDaclDefaulted)
{
    constexpr SECURITY_DESCRIPTOR_CONTROL kDefaulted = 0x0008;
    constexpr SECURITY_DESCRIPTOR_CONTROL kBoth = SE_DACL_PRESENT | kDefaulted;
    auto* const descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    if (descriptor->Revision != SECURITY_DESCRIPTOR_REVISION)
        return Fail(ERROR_UNKNOWN_REVISION);
    const int flags = (bDaclPresent ? SE_DACL_PRESENT : 0) | (bDaclPresent && bDaclDefaulted ? kDefaulted : 0);
    descriptor->Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>((descriptor->Control & ~kBoth) | flags);
    descriptor->Dacl = bDaclPresent ? pDacl : nullptr;
    return TRUE;
}
