// Waits for data that a foreign stream or storage doesn't have yet.
#pragma once

#include "core/ticks.h"
#include "files/lock_back_off.h"

#include <windows.h>

#include <objbase.h>

namespace qx
{

// Repeats a call while it returns E_PENDING, for at most ten seconds.
template <class Call>
HRESULT WaitForData(const Call& call)
{
    constexpr unsigned kMostMilliseconds = 10'000;
    HRESULT result = call();
    if (result != E_PENDING)
        return result;
    const auto begin = UtilGetTicks();
    for (clsLockBackOff backOff; result == E_PENDING && UtilGetTicks() - begin < kMostMilliseconds; result = call())
        backOff.Wait();
    return result;
}

} // namespace qx
