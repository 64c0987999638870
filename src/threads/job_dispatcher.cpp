#include "threads/job_dispatcher.h"

#include <timeapi.h>

#include <utility>

namespace qx
{
namespace
{

constexpr DWORD eventPatience = 1'000;

// The exact sleeps of a wait that goes on.
class ShortSleeps
{
public:
    ShortSleeps() = default;
    ShortSleeps(const ShortSleeps&) = delete;
    ShortSleeps& operator=(const ShortSleeps&) = delete;
    ~ShortSleeps()
    {
        if (_isRaised)
            timeEndPeriod(1);
    }

    void Sleep()
    {
        if (!_isRaised)
            _isRaised = timeBeginPeriod(1) == TIMERR_NOERROR;
        ::Sleep(1);
    }

private:
    bool _isRaised = false;
};

std::unique_ptr<clsUTThreadedJob> TakeFirst(ThreadedJobs& jobs)
{
    std::optional<std::unique_ptr<clsUTThreadedJob>> first = jobs.TakeAt(0);
    return first ? std::move(*first) : nullptr;
}

bool HasGroup(const ThreadedJobs& jobs, int group)
{
    for (const auto& job : jobs)
        if (job->IsOfGroup(group))
            return true;
    return false;
}

} // namespace

bool clsThreadedJobDispatcher::IsIdle() const
{
    const clsCriticalSectionLock lock(_lock);
    return _queued.IsEmpty() && _finished.IsEmpty() && _running.IsEmpty() && _callerJobs.IsEmpty();
}

bool clsThreadedJobDispatcher::JobsDone(int group) const
{
    if (group == 0)
        return IsIdle();
    const clsCriticalSectionLock lock(_lock);
    for (const ThreadedJobs* jobs : {&_queued, &_finished, &_running, &_callerJobs})
        if (HasGroup(*jobs, group))
            return false;
    return true;
}

void clsThreadedJobDispatcher::Abort(int group)
{
    const clsCriticalSectionLock lock(_lock);
    if (std::exchange(_isAborted, true))
        return;
    // Collected first: what their release leads to may come back to here.
    ThreadedJobs dropped;
    for (ThreadedJobs* jobs : {&_queued, &_finished, &_callerJobs})
    {
        ThreadedJobs kept;
        while (std::unique_ptr<clsUTThreadedJob> job = TakeFirst(*jobs))
            (job->IsOfGroup(group) ? dropped : kept).Append(std::move(job));
        *jobs = std::move(kept);
    }
    dropped.Clear();
    _jobEvent.Set();
}

void clsThreadedJobDispatcher::ResetAbort()
{
    const clsCriticalSectionLock lock(_lock);
    _isAborted = false;
}

bool clsThreadedJobDispatcher::IsAborted() const
{
    const clsCriticalSectionLock lock(_lock);
    return _isAborted;
}

void clsThreadedJobDispatcher::Finalize(IUTThreadedJobHost* host)
{
    RunUntilDone([=, this] { return FinalizePass(host); });
}

void clsThreadedJobDispatcher::Close()
{
    Abort(0);
    RunUntilDone([this] { return ClosePass(); });
}

// A pass gives whether it found something to do; only then is there no reason to yield, nor to ask for the end.
template <class Pass>
void clsThreadedJobDispatcher::RunUntilDone(Pass pass)
{
    ShortSleeps sleeps;
    for (;;)
    {
        if (pass())
            continue;
        if (JobsDone(0))
            break;
        sleeps.Sleep();
    }
    // The event wakes one thread only, and several may wait for this end.
    _jobEvent.Set();
}

bool clsThreadedJobDispatcher::FinalizePass(IUTThreadedJobHost* host)
{
    const bool didRun = RunOwnJob();
    if (const std::unique_ptr<clsUTThreadedJob> job = GetFinishedJob())
    {
        job->Tell(host ? host : job->host.Get());
        return true;
    }
    if (didRun || JobsDone(0))
        return didRun;
    if (!host || host->WaitForJobs(_jobEvent.Get()) == 1)
        WaitForSingleObject(_jobEvent.Get(), eventPatience);
    return false;
}

bool clsThreadedJobDispatcher::ClosePass()
{
    const bool didRun = RunOwnJob();
    if (GetFinishedJob() || didRun)
        return true;
    if (!JobsDone(0))
        WaitForSingleObject(_jobEvent.Get(), eventPatience);
    return false;
}

// A job for the caller; or, in the case that there is not one worker, a queued one: without this the driving thread
// would wait for ever.
bool clsThreadedJobDispatcher::RunOwnJob()
{
    std::unique_ptr<clsUTThreadedJob> callerJob;
    clsUTThreadedJob* queuedJob = nullptr;
    {
        const clsCriticalSectionLock lock(_lock);
        callerJob = TakeFirst(_callerJobs);
        if (!callerJob && HasNoWorkers())
            queuedJob = MoveFirstToRunning();
    }
    if (callerJob)
    {
        RunCallerJob(std::move(callerJob));
        return true;
    }
    if (!queuedJob)
        return false;
    queuedJob->Run();
    JobCompleted(*queuedJob);
    return true;
}

void clsThreadedJobDispatcher::RunCallerJob(std::unique_ptr<clsUTThreadedJob> job)
{
    job->Run();
    if (job->job)
        job->job->GetResult(); // a job may count on being asked
    if (!job->TellOwnHost())
        KeepFinished(std::move(job));
}

void clsThreadedJobDispatcher::KeepFinished(std::unique_ptr<clsUTThreadedJob> job)
{
    const clsCriticalSectionLock lock(_lock);
    _finished.Append(std::move(job));
    _jobEvent.Set();
}

void clsThreadedJobDispatcher::MoveRunning(const clsUTThreadedJob& job, ThreadedJobs& target)
{
    std::ptrdiff_t index = 0;
    for (const auto& running : _running)
    {
        if (running.get() == &job)
            break;
        ++index;
    }
    _running.MoveAt(index, target);
}

clsUTThreadedJob* clsThreadedJobDispatcher::MoveFirstToRunning()
{
    const std::unique_ptr<clsUTThreadedJob>* const job = _queued.MoveAt(0, _running);
    return job ? job->get() : nullptr;
}

} // namespace qx
