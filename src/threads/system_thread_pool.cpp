#include "threads/system_thread_pool.h"

#include "core/system_values.h"
#include "module/module_frame.h"

#include <utility>

namespace qx
{
namespace
{

constexpr unsigned short kFirstSystemWithPools = 0x0600;

} // namespace

bool clsThreadPoolBase::HasAll()
{
    for (LateProcedure* function :
        std::initializer_list<LateProcedure*>{&p_CreateThreadpool, &p_CloseThreadpool, &p_CreateThreadpoolCleanupGroup,
            &p_CloseThreadpoolCleanupGroup, &p_CloseThreadpoolCleanupGroupMembers, &p_CreateThreadpoolWork,
            &p_SubmitThreadpoolWork, &p_WaitForThreadpoolWorkCallbacks, &p_CloseThreadpoolWork, &p_CallbackMayRunLong})
        if (!function->IsThere())
            return false;
    return true;
}

clsThreadPool::clsThreadPool()
{
    if (SystemVersion() < kFirstSystemWithPools || !HasAll())
        return;
    _pool = p_CreateThreadpool(nullptr);
    _cleanupGroup = p_CreateThreadpoolCleanupGroup();
    _environment.pool = _pool;
    _environment.cleanupGroup = _cleanupGroup;
}

// At the end of the process there is nothing to wait for, because the threads no longer exist.
clsThreadPool::~clsThreadPool()
{
    if (IsProcessEnding())
        return;
    if (_cleanupGroup)
    {
        {
            const clsCriticalSectionLock lock(_lock);
            _isEnding = true;
        }
        p_CloseThreadpoolCleanupGroupMembers(_cleanupGroup, TRUE, nullptr);
        p_CloseThreadpoolCleanupGroup(_cleanupGroup);
    }
    if (_pool)
        p_CloseThreadpool(_pool);
}

PTP_WORK clsThreadPool::CreateWork(PTP_WORK_CALLBACK callback, void* context)
{
    return _pool ? p_CreateThreadpoolWork(callback, context, &_environment) : nullptr;
}

// Does nothing once the group is being closed: closing the group also closes its items, and this one would be closed
// twice.
void clsThreadPool::CloseWork(PTP_WORK work)
{
    const clsCriticalSectionLock lock(_lock);
    if (!_isEnding)
        p_CloseThreadpoolWork(work);
}

clsThreadPoolWorkerBaseRunOnce::clsThreadPoolWorkerBaseRunOnce(clsThreadPool& pool)
    : _pool(pool),
      _work(pool.CreateWork(&Callback, this))
{
}

// Uses a copy of the handle, because Run() may delete the object before the system call returns.
bool clsThreadPoolWorkerBaseRunOnce::Submit()
{
    const PTP_WORK work = _work;
    if (work)
        _pool.p_SubmitThreadpoolWork(work);
    return work != nullptr;
}

// The lock isn't held during the wait, because Run() may call this function itself; that call finds nothing left to do.
// At the end of the process there is no thread to wait for.
void clsThreadPoolWorkerBaseRunOnce::Finish()
{
    PTP_WORK work = nullptr;
    {
        const clsCriticalSectionLock lock(_lock);
        work = std::exchange(_work, nullptr);
    }
    if (!work || IsProcessEnding())
        return;
    if (_threadId != GetCurrentThreadId())
        _pool.p_WaitForThreadpoolWorkCallbacks(work, TRUE);
    _pool.CloseWork(work);
}

bool clsThreadPoolWorkerBaseRunOnce::MayRunLong() const
{
    const PTP_CALLBACK_INSTANCE instance = _instance;
    return instance && _pool.p_CallbackMayRunLong(instance) != FALSE;
}

// Run() may delete the object.
void CALLBACK clsThreadPoolWorkerBaseRunOnce::Callback(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK)
{
    auto& worker = *static_cast<clsThreadPoolWorkerBaseRunOnce*>(context);
    worker._instance = instance;
    worker._threadId = GetCurrentThreadId();
    worker.Run();
}

} // namespace qx
