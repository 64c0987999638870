// The system's own thread pool, for work that is done once. (Job pools have threads of their own: see
// job_dispatcher.h.)
#pragma once

#include "core/critical_section.h"
#include "module/late_load.h"

#include <array>
#include <atomic>

namespace qx
{

class clsThreadPoolBase : public CLateLoadBase
{
public:
    clsThreadPoolBase() : CLateLoadBase(L"kernel32") {}

    LateFunction<PTP_POOL(void*)> p_CreateThreadpool{*this, L"p_CreateThreadpool", 4};
    LateFunction<void(PTP_POOL)> p_CloseThreadpool{*this, L"p_CloseThreadpool", 4};
    LateFunction<PTP_CLEANUP_GROUP()> p_CreateThreadpoolCleanupGroup{*this, L"p_CreateThreadpoolCleanupGroup"};
    LateFunction<void(PTP_CLEANUP_GROUP)> p_CloseThreadpoolCleanupGroup{*this, L"p_CloseThreadpoolCleanupGroup", 4};
    LateFunction<void(PTP_CLEANUP_GROUP, BOOL, void*)> p_CloseThreadpoolCleanupGroupMembers{
        *this, L"p_CloseThreadpoolCleanupGroupMembers", 12};
    LateFunction<PTP_WORK(PTP_WORK_CALLBACK, void*, void*)> p_CreateThreadpoolWork{
        *this, L"p_CreateThreadpoolWork", 12};
    LateFunction<void(PTP_WORK)> p_SubmitThreadpoolWork{*this, L"p_SubmitThreadpoolWork", 4};
    LateFunction<void(PTP_WORK, BOOL)> p_WaitForThreadpoolWorkCallbacks{*this, L"p_WaitForThreadpoolWorkCallbacks", 8};
    LateFunction<void(PTP_WORK)> p_CloseThreadpoolWork{*this, L"p_CloseThreadpoolWork", 4};
    LateFunction<BOOL(PTP_CALLBACK_INSTANCE)> p_CallbackMayRunLong{*this, L"p_CallbackMayRunLong", 4};

protected:
    bool HasAll();
};

// A pool with a cleanup group. Empty on systems that have none.
class clsThreadPool : public clsThreadPoolBase
{
public:
    clsThreadPool();
    // Waits for the callbacks that run, and drops the others.
    ~clsThreadPool() override;

    explicit operator bool() const { return _pool != nullptr; }

    // Null without a pool or memory.
    PTP_WORK CreateWork(PTP_WORK_CALLBACK callback, void* context);
    void CloseWork(PTP_WORK work);

private:
    // The system's record in its first version, which all of them take.
    struct Environment
    {
        DWORD version = 1;
        PTP_POOL pool = nullptr;
        PTP_CLEANUP_GROUP cleanupGroup = nullptr;
        std::array<void*, 5> rest{};
    };
    static_assert(sizeof(Environment) == 64);

    Environment _environment;
    PTP_POOL _pool = nullptr;
    PTP_CLEANUP_GROUP _cleanupGroup = nullptr;
    clsCriticalSection _lock; // the closing of items, beside the end
    bool _isEnding = false;
};

// Something that a thread of the pool does once. The subclass's constructor calls Submit(), and its destructor Finish()
// if Run() uses members of its own. Run() may delete the object.
class clsThreadPoolWorkerBaseRunOnce
{
public:
    explicit clsThreadPoolWorkerBaseRunOnce(clsThreadPool& pool);
    clsThreadPoolWorkerBaseRunOnce(const clsThreadPoolWorkerBaseRunOnce&) = delete;
    clsThreadPoolWorkerBaseRunOnce& operator=(const clsThreadPoolWorkerBaseRunOnce&) = delete;

    // The order of the virtual operations is part of the interface.

    virtual void Run() = 0;
    virtual ~clsThreadPoolWorkerBaseRunOnce() { Finish(); }

protected:
    // False where there is no pool: then it will never run.
    bool Submit();
    // Drops a run that hasn't begun, and waits for one that has, except for that which calls this.
    void Finish();
    // For a run that takes long: whether the pool has other threads for others.
    bool MayRunLong() const;

private:
    static void CALLBACK Callback(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK work);

    clsThreadPool& _pool;
    clsCriticalSection _lock; // the end
    PTP_WORK _work;
    std::atomic<PTP_CALLBACK_INSTANCE> _instance = nullptr;
    std::atomic<DWORD> _threadId = 0;
};

} // namespace qx
