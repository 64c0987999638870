#pragma once

#include "core/developer_run.h"

#include <windows.h>

namespace qxtest
{

// Sets the environment variable `user`, which determines the result of UtilIsDeveloperRun. The destructor removes the
// variable.
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
