// Frames and modules with symbols.
#include <qxut23/addresses.h>
#include <qxut23/stacks.h>

#include "exports/guard.h"
#include "stacks/address_texts.h"
#include "stacks/debug_help_wrapper.h"
#include "stacks/debug_privilege.h"

#include <cstddef>
#include <cstdint>

using namespace qx;

// A handle points directly to the job.
struct QxDebugHelpJob
{
    clsDBGHelpWrapperGPFProt job;

    void End() { job.End(); }
    bool IsCutOff() const { return job.IsCutOff(); }
};

HDEBUGHELPJOB UtilDebugHelpJobOpen(void)
{
    return Guarded(static_cast<HDEBUGHELPJOB>(nullptr), [] { return std::make_unique<QxDebugHelpJob>().release(); });
}

void UtilDebugHelpJobClose(HDEBUGHELPJOB job)
{
    Guarded([=] { CloseDebugHelpJob()(job); });
}

void UtilDebugHelpSetOption(HDEBUGHELPJOB job, std::uint32_t key, std::uint32_t value)
{
    if (job)
        Guarded([=] { job->job.SetOption(key, value); });
}

std::int32_t UtilDebugHelpGetStackTrace(HDEBUGHELPJOB job, IDBGStackTraceList** list, const void* context)
{
    if (!list)
        return 0;
    *list = nullptr;
    if (!job)
        return 0;
    CONTEXT own{};
    if (!context)
        RtlCaptureContext(&own);
    return Guarded(0,
        [&]
        {
            const DebugPrivilege privilege;
            *list = job->job.GetStackTrace(context ? *static_cast<const CONTEXT*>(context) : own).release();
            return *list ? 1 : 0;
        });
}

std::int32_t UtilDebugHelpGetModuleList(HDEBUGHELPJOB job, IDBGModuleList** list)
{
    if (!list)
        return 0;
    *list = nullptr;
    if (!job)
        return 0;
    return Guarded(0,
        [=]
        {
            *list = job->job.GetModuleList().release();
            return *list ? 1 : 0;
        });
}

void UtilGetDBGHELPThreadingCS(void** section)
{
    if (section)
        *section = &DebugHelpThreadingLock();
}

void UtilGetGDIThreadingCS(void** section)
{
    if (section)
        *section = &GraphicsThreadingLock();
}

std::int32_t QxDescribeAddresses(
    const std::uint64_t* addresses, std::size_t count, std::int32_t areExact, QxAddressTextProc receive, void* user)
{
    if (!receive || (!addresses && count > 0))
        return 0;
    return Guarded(0, [=] { return DescribeAddresses(addresses, count, areExact != 0, receive, user) ? 1 : 0; });
}
