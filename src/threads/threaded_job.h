// What a job dispatcher keeps of one job.
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
    // The object may have no IUTThreadedJob, and be null: the record passes through the dispatcher all the same.
    clsUTThreadedJob(const wchar_t* jobName, IUnknown* object, IUTThreadedJobHost* itsHost);
    clsUTThreadedJob(const clsUTThreadedJob&) = delete;
    clsUTThreadedJob& operator=(const clsUTThreadedJob&) = delete;
    virtual ~clsUTThreadedJob() = default;

    bool CanRunOnWorker() const { return !job || job->CanRunOnWorker() != 0; }
    // Group 0 stands for all.
    bool IsOfGroup(int group) const { return group == 0 || group == (job ? job->GetGroup() : 0); }
    void Run() const
    {
        if (job)
            job->Run();
    }
    // Whether the host finishes with the job.
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
