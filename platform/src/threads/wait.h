// Waiting for objects and handles.
#pragma once

#include "threads/waitable.h"

#include <winbase.h>

namespace qxplatform
{

struct WaitOptions
{
    bool forAll = false;
    DWORD milliseconds = INFINITE;
    bool isAlertable = false;
};

// Returns the objects of the handles. If a handle can't be waited for, returns fewer objects and sets the last error.
std::vector<Ref<Waitable>> WaitablesOf(DWORD count, const HANDLE* handles);

// Returns WAIT_OBJECT_0 plus the index of the object, WAIT_TIMEOUT, or WAIT_IO_COMPLETION if calls are queued to the
// thread. The result must be passed to FinishWait().
DWORD WaitFor(const std::vector<Ref<Waitable>>& objects, const WaitOptions& options);

// Lets the thread continue: blocks while it is suspended, ends it if it has been terminated, and runs queued calls.
// Call it when no cleanup is pending.
DWORD FinishWait(DWORD result);

} // namespace qxplatform
