// The system's thread pool: work items, cleanup groups, and threads that are started and ended as needed.
#include <threadpoolapiset.h>

#include "base/forever.h"
#include "pool/waitable_queue.h"
#include "threads/thread_object.h"

#include <algorithm>

using namespace qxplatform;

namespace
{

constexpr std::size_t kMaximumThreads = 500;
constexpr DWORD kIdlePatience = 5'000;

} // namespace

// Waitable: signalled while none of its callbacks waits or runs. The dispatcher lock guards all members after the
// constants.
struct _TP_WORK : Waitable
{
    _TP_WORK(PTP_WORK_CALLBACK workCallback, void* workContext, const Ref<_TP_POOL>& itsPool,
        PTP_CLEANUP_GROUP_CANCEL_CALLBACK onCancel)
        : Waitable(ObjectType::ThreadPool),
          callback(workCallback),
          context(workContext),
          pool(itsPool),
          cancelCallback(onCancel)
    {
    }

    bool IsSignalled() const override { return outstanding == 0; }

    void ForgetForeignCallbacks();
    void Finish(std::size_t count);
    // A closed item stays in its group until its callbacks have ended, so that closing the group waits for them. The
    // caller holds a reference.
    void LeaveGroupIfDone();

    const PTP_WORK_CALLBACK callback;
    void* const context;
    const Ref<_TP_POOL> pool;
    const PTP_CLEANUP_GROUP_CANCEL_CALLBACK cancelCallback;

    std::size_t outstanding = 0;            // callbacks that wait or run
    unsigned generation = ForkGeneration(); // of the process that runs the callbacks
    PTP_CLEANUP_GROUP group = nullptr;
    bool isClosed = false; // the caller's reference has been released
};

struct _TP_POOL : WaitableQueue<Ref<_TP_WORK>>
{
    _TP_POOL() : WaitableQueue(ObjectType::ThreadPool) {}

    void Submit(_TP_WORK& work);
    // For a forked child, which has none of the parent's threads.
    void ReplaceForeignThreads();
    // Removes the item's waiting callbacks.
    void Cancel(_TP_WORK& work);
    bool MayGrow() const { return _threads < kMaximumThreads; }

private:
    static unsigned ThreadMain(void* pool);
    void RunCallbacks();
    bool HasLeft();
    void StartThreads(std::unique_lock<Mutex>& guard);
    void ForgetForeignThreads();

    unsigned _generation = ForkGeneration(); // of the process that runs the threads
    std::size_t _threads = 0;
    std::size_t _starting = 0; // the threads that haven't reached the queue yet
};

struct _TP_CLEANUP_GROUP : Object
{
    _TP_CLEANUP_GROUP() : Object(ObjectType::ThreadPool) {}

    std::vector<Ref<_TP_WORK>> members;
};

// Callbacks that threads of the parent process were running never end in a forked child.
void _TP_WORK::ForgetForeignCallbacks()
{
    if (generation == ForkGeneration())
        return;
    generation = ForkGeneration();
    outstanding = pool->CountIf([this](const Ref<_TP_WORK>& waiting) { return waiting.get() == this; });
}

void _TP_WORK::Finish(std::size_t count)
{
    outstanding -= count;
    if (outstanding != 0)
        return;
    WakeWaiters();
    LeaveGroupIfDone();
}

void _TP_WORK::LeaveGroupIfDone()
{
    if (!isClosed || outstanding != 0 || group == nullptr)
        return;
    std::erase_if(group->members, [this](const Ref<_TP_WORK>& member) { return member.get() == this; });
    group = nullptr;
}

struct _TP_CALLBACK_INSTANCE
{
    _TP_POOL& pool;
};

// Adds a callback, and starts a thread for it if no thread is free: no callback waits for another one to end, up to the
// maximum number of threads.
void _TP_POOL::Submit(_TP_WORK& work)
{
    std::unique_lock guard(DispatcherLock());
    ForgetForeignThreads();
    work.ForgetForeignCallbacks();
    ++work.outstanding;
    Put(Ref<_TP_WORK>(&work));
    StartThreads(guard);
}

void _TP_POOL::StartThreads(std::unique_lock<Mutex>& guard)
{
    while (Count() > WaiterCount() + _starting && MayGrow())
    {
        ++_threads;
        ++_starting;
        guard.unlock();
        AddRef(); // the thread's own
        const bool isStarted = static_cast<bool>(ThreadObject::Start(&ThreadMain, this, 0, false));
        guard.lock();
        if (isStarted)
            continue;
        --_threads;
        --_starting;
        Release(); // the caller has another reference
        return;
    }
}

void _TP_POOL::ForgetForeignThreads()
{
    if (_generation == ForkGeneration())
        return;
    _generation = ForkGeneration();
    _threads = _starting = 0;
}

void _TP_POOL::ReplaceForeignThreads()
{
    std::unique_lock guard(DispatcherLock());
    if (_generation == ForkGeneration())
        return;
    ForgetForeignThreads();
    StartThreads(guard);
}

void _TP_POOL::Cancel(_TP_WORK& work)
{
    const std::lock_guard guard(DispatcherLock());
    work.ForgetForeignCallbacks();
    work.Finish(Remove([&work](const Ref<_TP_WORK>& waiting) { return waiting.get() == &work; }));
}

unsigned _TP_POOL::ThreadMain(void* pool)
{
    static_cast<_TP_POOL*>(pool)->RunCallbacks();
    static_cast<_TP_POOL*>(pool)->Release();
    return 0;
}

void _TP_POOL::RunCallbacks()
{
    {
        const std::lock_guard guard(DispatcherLock());
        --_starting;
    }
    do
    {
        std::optional<Ref<_TP_WORK>> work;
        while (FinishWait(WaitForItem(kIdlePatience, work)), work)
        {
            _TP_CALLBACK_INSTANCE instance{*this};
            (*work)->callback(&instance, (*work)->context, work->get());
            const std::lock_guard guard(DispatcherLock());
            (*work)->Finish(1);
        }
    } while (!HasLeft());
}

// Returns false if a callback was added just after the wait.
bool _TP_POOL::HasLeft()
{
    const std::lock_guard guard(DispatcherLock());
    if (Count() != 0)
        return false;
    --_threads;
    return true;
}

namespace
{

_TP_POOL& DefaultPool()
{
    static constinit Forever<Ref<_TP_POOL>> pool;
    return *pool.Get([] { return MakeObject<_TP_POOL>(); });
}

// Transfers a reference to the caller of the API.
template <class T>
T* GiveAway(const Ref<T>& object)
{
    object->AddRef();
    return object.get();
}

DWORD WaitForCallbacks(const Ref<_TP_WORK>& work)
{
    work->pool->ReplaceForeignThreads();
    {
        const std::lock_guard guard(DispatcherLock());
        work->ForgetForeignCallbacks();
    }
    return WaitFor(WaitObjects(*work), {});
}

} // namespace

PTP_POOL WINAPI CreateThreadpool(PVOID)
{
    return GiveAway(MakeObject<_TP_POOL>());
}

// Ends the pool. Its threads end when there is nothing left to do.
void WINAPI CloseThreadpool(PTP_POOL ptpp)
{
    {
        const std::lock_guard guard(DispatcherLock());
        ptpp->End();
    }
    ptpp->Release();
}

PTP_CLEANUP_GROUP WINAPI CreateThreadpoolCleanupGroup(void)
{
    return GiveAway(MakeObject<_TP_CLEANUP_GROUP>());
}

void WINAPI CloseThreadpoolCleanupGroup(PTP_CLEANUP_GROUP ptpcg)
{
    ptpcg->Release();
}

void WINAPI CloseThreadpoolCleanupGroupMembers(
    PTP_CLEANUP_GROUP ptpcg, BOOL fCancelPendingCallbacks, PVOID pvCleanupContext)
{
    std::vector<Ref<_TP_WORK>> members;
    {
        const std::lock_guard guard(DispatcherLock());
        members.swap(ptpcg->members);
        for (const Ref<_TP_WORK>& work : members)
            work->group = nullptr;
    }
    for (const Ref<_TP_WORK>& work : members)
    {
        if (fCancelPendingCallbacks)
            work->pool->Cancel(*work);
        FinishWait(WaitForCallbacks(work));
        bool wasClosed = false;
        {
            const std::lock_guard guard(DispatcherLock());
            wasClosed = std::exchange(work->isClosed, true);
        }
        if (wasClosed)
            continue;
        if (fCancelPendingCallbacks && work->cancelCallback != nullptr)
            work->cancelCallback(work->context, pvCleanupContext);
        work->Release(); // the caller's reference
    }
}

PTP_WORK WINAPI CreateThreadpoolWork(PTP_WORK_CALLBACK pfnwk, PVOID pv, PTP_CALLBACK_ENVIRON pcbe)
{
    const Ref<_TP_POOL> pool(pcbe != nullptr && pcbe->Pool != nullptr ? pcbe->Pool : &DefaultPool());
    const auto work =
        MakeObject<_TP_WORK>(pfnwk, pv, pool, pcbe != nullptr ? pcbe->CleanupGroupCancelCallback : nullptr);
    if (pcbe != nullptr && pcbe->CleanupGroup != nullptr)
    {
        const std::lock_guard guard(DispatcherLock());
        work->group = pcbe->CleanupGroup;
        work->group->members.push_back(work);
    }
    return GiveAway(work);
}

void WINAPI SubmitThreadpoolWork(PTP_WORK pwk)
{
    pwk->pool->Submit(*pwk);
}

void WINAPI WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks)
{
    const Ref<_TP_WORK> work(pwk);
    if (fCancelPendingCallbacks)
        work->pool->Cancel(*work);
    FinishWait(WaitForCallbacks(work));
}

// Closes a work item. Waiting and running callbacks keep the object alive.
void WINAPI CloseThreadpoolWork(PTP_WORK pwk)
{
    const Ref<_TP_WORK> work(pwk);
    {
        const std::lock_guard guard(DispatcherLock());
        work->isClosed = true;
        work->LeaveGroupIfDone();
    }
    work->Release(); // the caller's reference
}

BOOL WINAPI CallbackMayRunLong(PTP_CALLBACK_INSTANCE pci)
{
    const std::lock_guard guard(DispatcherLock());
    return pci->pool.MayGrow();
}
