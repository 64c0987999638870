#include "threads/wait.h"

#include <synchapi.h>
#include <winbase.h>

#include "base/fail.h"
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

// Clears the list in a forked child, where the waits of the parent's threads no longer exist and other threads may be
// using their stacks.
void Waitable::ForgetForeignWaiters()
{
    if (_generation == ForkGeneration())
        return;
    _generation = ForkGeneration();
    _latestWaiter = nullptr;
    _waiterCount = 0;
}

void Waitable::AddWaiter(WaitEntry& entry)
{
    ForgetForeignWaiters();
    entry.next = _latestWaiter;
    entry.link = &_latestWaiter;
    if (_latestWaiter != nullptr)
        _latestWaiter->link = &entry.next;
    _latestWaiter = &entry;
    ++_waiterCount;
}

void Waitable::RemoveWaiter(WaitEntry& entry)
{
    *entry.link = entry.next;
    if (entry.next != nullptr)
        entry.next->link = entry.link;
    --_waiterCount;
}

void Waitable::WakeWaiters()
{
    ForgetForeignWaiters();
    for (const WaitEntry* entry = _latestWaiter; entry != nullptr; entry = entry->next)
        WakeWaiter(*entry->waiter);
}

LONG* Waitable::MarkLatestWaiter()
{
    ForgetForeignWaiters();
    for (const WaitEntry* entry = _latestWaiter; entry != nullptr; entry = entry->next)
        if (!entry->waiter->isWoken)
        {
            entry->waiter->isWoken = TRUE;
            return &entry->waiter->isWoken;
        }
    return nullptr;
}

void WakeWaiter(Waiter& waiter)
{
    waiter.isWoken = TRUE;
    FutexWakeOne(&waiter.isWoken);
}

namespace
{

std::optional<DWORD> TakeSignalled(const WaitObjects& objects, bool forAll)
{
    const auto isSignalled = [](const Waitable* object)
    {
        return object->IsSignalled();
    };
    if (forAll && objects.Count() != 0)
    {
        if (!std::all_of(objects.begin(), objects.end(), isSignalled))
            return std::nullopt;
        DWORD result = WAIT_OBJECT_0;
        for (Waitable* const object : objects)
        {
            if (object->IsAbandoned())
                result = WAIT_ABANDONED_0;
            object->Take();
        }
        return result;
    }
    const auto first = std::find_if(objects.begin(), objects.end(), isSignalled);
    if (first == objects.end())
        return std::nullopt;
    const DWORD base = (*first)->IsAbandoned() ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
    (*first)->Take();
    return base + static_cast<DWORD>(first - objects.begin());
}

// Registers the wait with all objects and the thread for its duration.
class Registration
{
public:
    Registration(const WaitObjects& objects, ThreadObject* thread, Waiter& waiter) : _objects(objects), _thread(thread)
    {
        if (_thread != nullptr)
            _thread->SetWaiter(&waiter);
        WaitEntry* entry = _entries;
        for (Waitable* const object : _objects)
        {
            entry->waiter = &waiter;
            object->AddWaiter(*entry++);
        }
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration()
    {
        if (_thread != nullptr)
            _thread->SetWaiter(nullptr);
        WaitEntry* entry = _entries;
        for (Waitable* const object : _objects)
            object->RemoveWaiter(*entry++);
    }

private:
    const WaitObjects& _objects;
    ThreadObject* const _thread;
    WaitEntry _entries[WaitObjects::kCapacity];
};

Ref<Waitable> WaitableOf(HANDLE handle)
{
    const Ref<Object> object = IsPseudoHandle(handle) ? PseudoHandleObject(handle) : ObjectOf(handle);
    return Ref<Waitable>(object ? object->AsWaitable() : nullptr);
}

// Returns the reason for the wait to end, if there is one. Signalled objects take precedence over queued calls.
std::optional<DWORD> Outcome(const WaitObjects& objects, const WaitOptions& options, ThreadObject* thread)
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

bool AddWaitables(WaitObjects& objects, DWORD count, const HANDLE* handles)
{
    for (DWORD index = 0; index < count; ++index)
    {
        const Ref<Waitable> object = WaitableOf(handles[index]);
        if (!object)
            return Fail(ERROR_INVALID_HANDLE);
        if (object->type == ObjectType::Mutex)
            ThreadObject::Current(); // the future owner, created now because the wait itself allocates nothing
        objects.Add(*object);
    }
    return true;
}

DWORD WaitFor(const WaitObjects& objects, const WaitOptions& options)
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
    WaitObjects objects;
    return AddWaitables(objects, count, handles) ? WaitFor(objects, options) : WAIT_FAILED;
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
    FinishWait(WaitFor(WaitObjects(), {false, dwMilliseconds}));
}
