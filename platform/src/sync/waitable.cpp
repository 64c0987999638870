#include "sync/waitable.h"

#include <synchapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "base/pseudo_handles.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <optional>

namespace qxplatform
{

struct Waiter
{
    std::condition_variable wake;
};

std::mutex& DispatcherLock()
{
    static std::mutex* const lock = new std::mutex; // outlives the static objects of callers
    return *lock;
}

void Waitable::RemoveWaiter(Waiter& waiter)
{
    _waiters.erase(std::find(_waiters.begin(), _waiters.end(), &waiter));
}

void Waitable::WakeWaiters()
{
    for (Waiter* const waiter : _waiters)
        waiter->wake.notify_one();
}

namespace
{

using Objects = std::vector<Ref<Waitable>>;

std::optional<DWORD> TakeSignalled(const Objects& objects, bool forAll)
{
    const auto isSignalled = [](const Ref<Waitable>& object)
    {
        return object->IsSignalled();
    };
    if (forAll)
    {
        if (!std::all_of(objects.begin(), objects.end(), isSignalled))
            return std::nullopt;
        for (const Ref<Waitable>& object : objects)
            object->Take();
        return WAIT_OBJECT_0;
    }
    const auto first = std::find_if(objects.begin(), objects.end(), isSignalled);
    if (first == objects.end())
        return std::nullopt;
    (*first)->Take();
    return WAIT_OBJECT_0 + static_cast<DWORD>(first - objects.begin());
}

// Stands on the lists of all objects for the time of a wait.
class Registration
{
public:
    Registration(const Objects& objects, Waiter& waiter) : _objects(objects), _waiter(waiter)
    {
        for (const Ref<Waitable>& object : _objects)
            object->AddWaiter(_waiter);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration()
    {
        for (const Ref<Waitable>& object : _objects)
            object->RemoveWaiter(_waiter);
    }

private:
    const Objects& _objects;
    Waiter& _waiter;
};

Ref<Waitable> WaitableOf(HANDLE handle)
{
    const Ref<Object> object = IsPseudoHandle(handle) ? PseudoHandleObject(handle) : ObjectOf(handle);
    return Ref<Waitable>(object ? object->AsWaitable() : nullptr);
}

} // namespace

DWORD WaitFor(const Objects& objects, bool forAll, DWORD milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    std::unique_lock guard(DispatcherLock());
    std::optional<DWORD> result = TakeSignalled(objects, forAll);
    if (result || milliseconds == 0)
        return result.value_or(WAIT_TIMEOUT);

    Waiter waiter;
    const Registration registration(objects, waiter);
    while (!(result = TakeSignalled(objects, forAll)))
    {
        if (milliseconds == INFINITE)
            waiter.wake.wait(guard);
        else if (Clock::now() >= end)
            return WAIT_TIMEOUT;
        else
            waiter.wake.wait_until(guard, end);
    }
    return *result;
}

} // namespace qxplatform

using namespace qxplatform;

DWORD WINAPI WaitForMultipleObjectsEx(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds, BOOL)
{
    if (nCount == 0 || nCount > MAXIMUM_WAIT_OBJECTS)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    Objects objects;
    for (DWORD index = 0; index < nCount; ++index)
    {
        objects.push_back(WaitableOf(lpHandles[index]));
        if (!objects.back())
        {
            SetLastError(ERROR_INVALID_HANDLE);
            return WAIT_FAILED;
        }
    }
    return WaitFor(objects, bWaitAll != FALSE, dwMilliseconds);
}

DWORD WINAPI WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds)
{
    return WaitForMultipleObjectsEx(nCount, lpHandles, bWaitAll, dwMilliseconds, FALSE);
}

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds)
{
    return WaitForMultipleObjectsEx(1, &hHandle, FALSE, dwMilliseconds, FALSE);
}

DWORD WINAPI WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL bAlertable)
{
    return WaitForMultipleObjectsEx(1, &hHandle, FALSE, dwMilliseconds, bAlertable);
}
