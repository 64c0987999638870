#include "files/lock_back_off.h"

#include "core/ticks.h"

#include <timeapi.h>

namespace qx
{

namespace
{

constexpr ULONGLONG kSlice = 100;    // ms
constexpr UINT kTimerResolution = 1; // ms

} // namespace

clsLockBackOff::~clsLockBackOff()
{
    if (_raised)
    {
        timeEndPeriod(kTimerResolution);
    }
}

void clsLockBackOff::Wait()
{
    const ULONGLONG slice = UtilGetTicks() / kSlice;
    const bool sameSlice = !_waited || slice == _slice;
    _waited = true;
    _slice = slice;
    if (sameSlice)
    {
        Sleep(0);
        return;
    }
    if (!_raised)
    {
        timeBeginPeriod(kTimerResolution);
        _raised = true;
    }
    Sleep(1);
}

} // namespace qx
