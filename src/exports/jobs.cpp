// Job pools.
#include <qxut23/jobs.h>

#include "exports/guard.h"
#include "threads/port_job_dispatcher.h"

#include <cstdint>
#include <utility>

using namespace qx;

// A handle points directly to the dispatcher.
struct QxUtThreadPool
{
    QxUtThreadPool(std::uint32_t maximumWorkers, const QXWCHAR* name) : dispatcher(maximumWorkers, name) {}

    clsThreadedJobDispatcherUsingIoCompletionPort dispatcher;
};

static_assert(sizeof(QXHRESULT) == 4 && sizeof(QXULONG) == 4);
static_assert(QXUT_E_INVALIDARG == E_INVALIDARG);

HUTTHREADPOOL UtilThreadPoolOpen(std::uint32_t maximumWorkers, const QXWCHAR* name)
{
    return Guarded(static_cast<HUTTHREADPOOL>(nullptr),
        [=] { return std::make_unique<QxUtThreadPool>(maximumWorkers, name).release(); });
}

std::int32_t UtilThreadPoolAdd(HUTTHREADPOOL pool, const QXWCHAR* name, IUnknown* job, IUTThreadedJobHost* host)
{
    if (!pool)
        return QXUT_E_INVALIDARG;
    return Guarded(static_cast<std::int32_t>(E_OUTOFMEMORY),
        [=]
        {
            ThreadedJobs added;
            added.Emplace(name, job, host);
            pool->dispatcher.AddJob(std::move(added));
            return 0;
        });
}

std::int32_t UtilThreadPoolAbort(HUTTHREADPOOL pool, std::int32_t group)
{
    if (!pool)
        return QXUT_E_INVALIDARG;
    return Guarded(static_cast<std::int32_t>(E_FAIL),
        [=]
        {
            pool->dispatcher.Abort(group);
            return 0;
        });
}

std::int32_t UtilThreadPoolFinalize(HUTTHREADPOOL pool, IUTThreadedJobHost* host)
{
    if (!pool || !host)
        return QXUT_E_INVALIDARG;
    return Guarded(static_cast<std::int32_t>(E_FAIL),
        [=]
        {
            pool->dispatcher.Finalize(host);
            return 0;
        });
}

void UtilThreadPoolClose(HUTTHREADPOOL pool)
{
    if (!pool)
        return;
    Guarded(
        [=]
        {
            const std::unique_ptr<QxUtThreadPool> closing(pool);
            closing->dispatcher.Close();
        });
}
