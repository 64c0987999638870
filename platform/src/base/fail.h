// How the layer's functions end without success: one place to set the last error, one table from errno.
#pragma once

#include <errhandlingapi.h>
#include <winerror.h>

namespace qxplatform
{

// Sets the last error; the result is that of a failed BOOL function.
inline BOOL Fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

// The system error code that the documentation names for the cause which errno tells.
DWORD ErrorFromErrno(int code);

// Fail() with the error for the present errno.
BOOL FailErrno();

} // namespace qxplatform
