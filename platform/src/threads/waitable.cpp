#include "threads/wait.h"

#include <synchapi.h>
#include <winbase.h>

#include "base/futex.h"
#include "base/handle_table.h"
#include "base/mutex.h"
#include "base/pseudo_handles.h"
#include "threads/held_sections.h"
#include "threads/thread_object.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>

#include <sched.h>

namespace qxplatform
{

// The word on which a wait blocks.
struct Waiter
{
    LONG isWoken = FALSE; // and hasn't checked again since
};

Mutex& DispatcherLock()
{
    static constinit Mutex lock;
    return lock;
}

// In a forked child the waits of the parent's threads are gone, and their stacks may serve other threads.
void Waitable::ForgetForeignWaiters()
{
    if (_generation == ForkGeneration())
        return;
    _generation = ForkGeneration();
    _waiters.clear();
    _waiterCount = 0;
}

void Waitable::AddWaiter(Waiter& waiter)
{
    ForgetForeignWaiters();
    _waiters.push_back(&waiter);
    ++_waiterCount;
}

void Waitable::RemoveWaiter(Waiter& waiter)
{
    _waiters.erase(std::find(_waiters.begin(), _waiters.end(), &waiter));
    --_waiterCount;
}

void Waitable::WakeWaiters()
{
    ForgetForeignWaiters();
    for (Waiter* const waiter : _waiters)
        WakeWaiter(*waiter);
}

LONG* Waitable::MarkLatestWaiter()
{
    ForgetForeignWaiters();
    const auto latest =
        std::find_if(_waiters.rbegin(), _waiters.rend(), [](const Waiter* waiter) { return !waiter->isWoken; });
    if (latest == _waiters.rend())
        return nullptr;
    (*latest)->isWoken = TRUE;
    return &(*latest)->isWoken;
}

void WakeWaiter(Waiter& waiter)
{
    waiter.isWoken = TRUE;
    FutexWakeOne(&waiter.isWoken);
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
    if (forAll && !objects.empty())
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

// Registers the wait with all objects and the thread for its duration.
class Registration
{
public:
    Registration(const Objects& objects, ThreadObject* thread, Waiter& waiter)
        : _objects(objects),
          _thread(thread),
          _waiter(waiter)
    {
        if (_thread != nullptr)
            _thread->SetWaiter(&waiter);
        for (const Ref<Waitable>& object : _objects)
            object->AddWaiter(_waiter);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration()
    {
        if (_thread != nullptr)
            _thread->SetWaiter(nullptr);
        for (const Ref<Waitable>& object : _objects)
            object->RemoveWaiter(_waiter);
    }

private:
    const Objects& _objects;
    ThreadObject* const _thread;
    Waiter& _waiter;
};

Ref<Waitable> WaitableOf(HANDLE handle)
{
    const Ref<Object> object = IsPseudoHandle(handle) ? PseudoHandleObject(handle) : ObjectOf(handle);
    return Ref<Waitable>(object ? object->AsWaitable() : nullptr);
}

// Returns the reason for the wait to end, if there is one. Signalled objects take precedence over queued calls.
std::optional<DWORD> Outcome(const Objects& objects, const WaitOptions& options, ThreadObject* thread)
{
    if (const std::optional<DWORD> taken = TakeSignalled(objects, options.forAll))
        return taken;
    if (thread == nullptr)
        return std::nullopt;
    if (options.isAlertable && thread->HasApcs())
        return WAIT_IO_COMPLETION;
    if (thread->gate.IsEndOrdered() && !HoldsCriticalSections())
        return WAIT_TIMEOUT; // FinishWait() doesn't return this value
    return std::nullopt;
}

using Clock = std::chrono::steady_clock;

timespec TimeIn(DWORD milliseconds)
{
    constexpr std::chrono::nanoseconds::rep kSecond = 1'000'000'000;
    const auto time = std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
    const auto end = time + DWORDLONG{milliseconds} * 1'000'000;
    return {static_cast<time_t>(end / kSecond), static_cast<long>(end % kSecond)};
}

bool HasCome(const timespec& time)
{
    return Clock::now().time_since_epoch() >=
           std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

Objects WaitablesOf(DWORD count, const HANDLE* handles)
{
    Objects objects;
    for (DWORD index = 0; index < count; ++index)
    {
        Ref<Waitable> object = WaitableOf(handles[index]);
        if (!object)
        {
            SetLastError(ERROR_INVALID_HANDLE);
            break;
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

DWORD WaitFor(const Objects& objects, const WaitOptions& options)
{
    const timespec end = TimeIn(options.milliseconds);
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    if (thread != nullptr)
        thread->gate.Enter();
    std::unique_lock guard(DispatcherLock());
    std::optional<DWORD> result = Outcome(objects, options, thread);
    if (result || options.milliseconds == 0)
        return result.value_or(WAIT_TIMEOUT);

    Waiter waiter;
    const Registration registration(objects, thread, waiter);
    while (!(result = Outcome(objects, options, thread)))
    {
        if (options.milliseconds != INFINITE && HasCome(end))
            return WAIT_TIMEOUT;
        waiter.isWoken = FALSE;
        guard.unlock();
        FutexWait(&waiter.isWoken, FALSE, options.milliseconds == INFINITE ? nullptr : &end);
        guard.lock();
    }
    return *result;
}

DWORD FinishWait(DWORD result)
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    if (thread == nullptr)
        return result;
    thread->LeaveGate();
    if (result == WAIT_IO_COMPLETION)
        thread->RunApcs();
    return result;
}

} // namespace qxplatform

using namespace qxplatform;

namespace
{

DWORD WaitForHandles(DWORD count, const HANDLE* handles, const WaitOptions& options)
{
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    const Objects objects = WaitablesOf(count, handles);
    return objects.size() == count ? WaitFor(objects, options) : WAIT_FAILED;
}

} // namespace

DWORD WINAPI WaitForMultipleObjectsEx(
    DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds, BOOL bAlertable)
{
    return FinishWait(WaitForHandles(nCount, lpHandles, {bWaitAll != FALSE, dwMilliseconds, bAlertable != FALSE}));
}

DWORD WINAPI WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds)
{
    return WaitForMultipleObjectsEx(nCount, lpHandles, bWaitAll, dwMilliseconds, FALSE);
}

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds)
{
    return WaitForMultipleObjectsEx(1, &hHandle, FALSE, dwMilliseconds, FALSE);
}

void WINAPI Sleep(DWORD dwMilliseconds)
{
    if (dwMilliseconds == 0)
        sched_yield();
    FinishWait(WaitFor({}, {false, dwMilliseconds}));
}
