// How long to wait between the tries for a lock.
#pragma once

#include <windows.h>

namespace qx
{

// Gives the processor away at once between most tries, and sleeps for a millisecond once in each tenth of a second: who
// has the lock holds it briefly as a rule, and a sleep is the longer the coarser the system's timer is. So its
// resolution is raised from the first real sleep to the end.
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
    ULONGLONG _slice = 0; // of the last wait
};

} // namespace qx
