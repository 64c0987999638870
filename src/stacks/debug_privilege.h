// Enables the privilege to debug processes.
#pragma once

#include <windows.h>

namespace qx
{

// Enables SeDebugPrivilege of the process for the lifetime of the object, and disables it afterwards. A failure is
// written to the debug output; on systems without tokens nothing happens.
class DebugPrivilege
{
public:
    DebugPrivilege();
    DebugPrivilege(const DebugPrivilege&) = delete;
    DebugPrivilege& operator=(const DebugPrivilege&) = delete;
    ~DebugPrivilege();

private:
    bool Set(DWORD attributes);

    HANDLE _token = nullptr;
    LUID _privilege{};
    bool _isEnabled = false;
};

} // namespace qx
