// Error reporting of the layer: one function that sets the last error, one table for errno.
#pragma once

#include <errhandlingapi.h>
#include <winerror.h>

namespace qxplatform
{

// Sets the last error and returns FALSE, the result of a failed BOOL function.
inline BOOL Fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

// Returns the documented system error code for an errno value.
DWORD ErrorFromErrno(int code);

// Calls Fail() with the error for the current errno.
BOOL FailErrno();

} // namespace qxplatform
