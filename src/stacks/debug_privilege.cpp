#include "stacks/debug_privilege.h"

#include "core/debug_line.h"
#include "module/late_libraries.h"

namespace qx
{

DebugPrivilege::DebugPrivilege()
{
    auto& advAPI = AdvAPI32();
    if (!advAPI.p_OpenProcessToken.IsThere() || !advAPI.p_LookupPrivilegeValue.IsThere() ||
        !advAPI.p_AdjustTokenPrivileges.IsThere())
        return;
    if (!advAPI.p_OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES, &_token))
    {
        _token = nullptr;
        DebugLine(L"Could not get the process token");
    }
    else if (!advAPI.p_LookupPrivilegeValue(nullptr, L"SeDebugPrivilege", &_privilege))
        DebugLine(L"Couldn't lookup SeDebugPrivilege name");
    else
        _isEnabled = Set(SE_PRIVILEGE_ENABLED);
}

DebugPrivilege::~DebugPrivilege()
{
    if (_isEnabled)
        Set(0);
    if (_token)
        CloseHandle(_token);
}

// The system call succeeds even if the token lacks the privilege; only the last error shows this.
bool DebugPrivilege::Set(DWORD attributes)
{
    TOKEN_PRIVILEGES privileges{};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0] = {_privilege, attributes};
    SetLastError(ERROR_SUCCESS);
    if (AdvAPI32().p_AdjustTokenPrivileges(_token, FALSE, &privileges, 0, nullptr, nullptr) &&
        GetLastError() == ERROR_SUCCESS)
        return true;
    DebugLine(L"Could not set the debug privilege");
    return false;
}

} // namespace qx
