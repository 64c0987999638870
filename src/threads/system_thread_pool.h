// The system's thread pool, for one-time work. Job pools have threads of their own: see job_dispatcher.h.
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

// A thread pool with a cleanup group. Empty on systems without thread pools.
class clsThreadPool : public clsThreadPoolBase
{
public:
    clsThreadPool();
    // Waits for running callbacks and cancels the others.
    ~clsThreadPool() override;

    explicit operator bool() const { return _pool != nullptr; }

    // Returns null if there is no pool or memory runs out.
    PTP_WORK CreateWork(PTP_WORK_CALLBACK callback, void* context);
    void CloseWork(PTP_WORK work);

private:
    // The first version of the system's structure, which all systems accept.
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
    clsCriticalSection _lock; // serialises the closing of items with the destructor
    bool _isEnding = false;
};

// Work that a pool thread runs once. The subclass calls Submit() in its constructor. If Run() uses members of the
// subclass, its destructor must call Finish(). Run() may delete the object.
class clsThreadPoolWorkerBaseRunOnce
{
public:
    explicit clsThreadPoolWorkerBaseRunOnce(clsThreadPool& pool);
    clsThreadPoolWorkerBaseRunOnce(const clsThreadPoolWorkerBaseRunOnce&) = delete;
    clsThreadPoolWorkerBaseRunOnce& operator=(const clsThreadPoolWorkerBaseRunOnce&) = delete;

    // The vtable order is part of the interface.

    virtual void Run() = 0;
    virtual ~clsThreadPoolWorkerBaseRunOnce() { Finish(); }

protected:
    // Returns false if there is no pool; Run() will never be called then.
    bool Submit();
    // Cancels a run that hasn't started, or waits for a run in progress unless it is called by that run.
    void Finish();
    // Notifies the pool that this run will take long. Returns true if the pool has other threads for other work.
    bool MayRunLong() const;

private:
    static void CALLBACK Callback(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK work);

    clsThreadPool& _pool;
    clsCriticalSection _lock; // protects Finish
    PTP_WORK _work;
    std::atomic<PTP_CALLBACK_INSTANCE> _instance = nullptr;
    std::atomic<DWORD> _threadId = 0;
};

} // namespace qx
