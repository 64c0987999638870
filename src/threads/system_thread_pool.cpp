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

// At the end of the process the threads are gone already, and there is nothing to wait for.
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

// The end of the group closes the items that are in it, and one that closes itself meanwhile would be released twice.
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

// Run() may have deleted the object before the system's function returns.
bool clsThreadPoolWorkerBaseRunOnce::Submit()
{
    const PTP_WORK work = _work;
    if (work)
        _pool.p_SubmitThreadpoolWork(work);
    return work != nullptr;
}

// The lock isn't held across the wait: Run() may come to here itself meanwhile, and finds nothing left to do. At the
// end of the process there is no thread any more that could be waited for.
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

// Behind Run() the object may be gone.
void CALLBACK clsThreadPoolWorkerBaseRunOnce::Callback(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK)
{
    auto& worker = *static_cast<clsThreadPoolWorkerBaseRunOnce*>(context);
    worker._instance = instance;
    worker._threadId = GetCurrentThreadId();
    worker.Run();
}

} // namespace qx
