#pragma once

#include "core/developer_run.h"

#include <windows.h>

namespace qxtest
{

// Sets the variable `user` while the object exists; the process counts as a developer's run accordingly.
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
