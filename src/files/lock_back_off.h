// The wait between attempts to take a lock.
#pragma once

#include <windows.h>

namespace qx
{

// Usually only yields the processor, and sleeps for 1 ms once in each 100 ms. Locks are normally held briefly, and a
// sleep lasts longer the coarser the system's timer is. The timer resolution is therefore raised from the first sleep
// until this object is destroyed.
class clsLockBackOff
{
public:
    clsLockBackOff() = default;
    clsLockBackOff(const clsLockBackOff&) = delete;
    clsLockBackOff& operator=(const clsLockBackOff&) = delete;
    ~clsLockBackOff();

    void Wait();

private:
    bool _waited = false;
    bool _raised = false;
    ULONGLONG _slice = 0; // the 100 ms slice in which the last wait began
};

} // namespace qx
