// The record that a job dispatcher keeps for each job.
#pragma once

#include "core/text/string.h"
#include "files/allocation_count.h"
#include "files/auto_release.h"

#include <qxut23/jobs.h>

#include <utility>

namespace qx
{

class clsUTThreadedJob : public clsAllocationCountVerifier<clsUTThreadedJob, 0>
{
public:
    // `object` may be null or lack the IUTThreadedJob interface. Such a record passes through the dispatcher without
    // being run.
    clsUTThreadedJob(const wchar_t* jobName, IUnknown* object, IUTThreadedJobHost* itsHost);
    clsUTThreadedJob(const clsUTThreadedJob&) = delete;
    clsUTThreadedJob& operator=(const clsUTThreadedJob&) = delete;
    virtual ~clsUTThreadedJob() = default;

    bool CanRunOnWorker() const { return !job || job->CanRunOnWorker() != 0; }
    // Group 0 means all groups.
    bool IsOfGroup(int group) const { return group == 0 || group == (job ? job->GetGroup() : 0); }
    void Run() const
    {
        if (job)
            job->Run();
    }
    // Notifies a host. Returns true if the host accepts the job, which is then done.
    bool Tell(IUTThreadedJobHost* someHost) const
    {
        return someHost && someHost->OnJobDone(name.Text(), job.Get()) == 0;
    }
    bool TellOwnHost() const { return Tell(host.Get()); }

    const String name;
    clsAutoRelease<IUTThreadedJob*> job;
    const clsAutoRelease<IUTThreadedJobHost*> host;
};

} // namespace qx
