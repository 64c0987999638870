// Waiting for objects, by object and by handle.
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

// The objects of the handles; fewer, with the last error, if one of the handles can't be waited for.
std::vector<Ref<Waitable>> WaitablesOf(DWORD count, const HANDLE* handles);

// WAIT_OBJECT_0 and the index of the object, WAIT_TIMEOUT, or WAIT_IO_COMPLETION where calls are queued to the thread.
// The result goes through FinishWait(), without fail.
DWORD WaitFor(const std::vector<Ref<Waitable>>& objects, const WaitOptions& options);

// Lets the thread go on: it stays here while it is suspended, ends here if that was ordered, and runs the calls that
// were queued. To be called when nothing has to be cleaned up any more.
DWORD FinishWait(DWORD result);

} // namespace qxplatform
