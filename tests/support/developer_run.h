#pragma once

#include "core/developer_run.h"

#include <windows.h>

namespace qxtest
{

// Makes the process a developer's run, or another user's, as long as it exists.
class UserIs
{
public:
    explicit UserIs(const wchar_t* user) { Set(user); }
    ~UserIs() { Set(nullptr); }
    UserIs(const UserIs&) = delete;
    UserIs& operator=(const UserIs&) = delete;

private:
    static void Set(const wchar_t* user)
    {
        SetEnvironmentVariableW(L"user", user);
        qx::ForgetDeveloperRun();
    }
};

} // namespace qxtest
