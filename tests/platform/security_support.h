// Changes access lists of files step by step, as programs do.
#pragma once

#include "system_support.h"

#include <aclapi.h>

#include <string>

namespace qxtest
{

inline constexpr SECURITY_INFORMATION kAccessList = DACL_SECURITY_INFORMATION;

// Returns the error of the first step that fails, as "step: error", or an empty text.
inline std::string SetRights(Text path, Text account, DWORD permissions, DWORD inheritance)
{
    PACL list = nullptr;
    PACL changed = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::string step = "get: ";
    DWORD error =
        GetNamedSecurityInfoW(path, SE_FILE_OBJECT, kAccessList, nullptr, nullptr, &list, nullptr, &descriptor);
    if (error == ERROR_SUCCESS)
    {
        step = "entries: ";
        EXPLICIT_ACCESS_W access{};
        BuildExplicitAccessWithNameW(&access, account.data(), permissions, SET_ACCESS, inheritance);
        error = SetEntriesInAclW(1, &access, list, &changed);
    }
    if (error == ERROR_SUCCESS)
    {
        step = "set: ";
        error = SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, changed, nullptr);
    }
    EXPECT_EQ(LocalFree(changed), nullptr);
    EXPECT_EQ(LocalFree(descriptor), nullptr);
    return error == ERROR_SUCCESS ? std::string() : step + std::to_string(error);
}

} // namespace qxtest
