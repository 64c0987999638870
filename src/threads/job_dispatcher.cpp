#include "threads/job_in_hand.h"

#include <timeapi.h>

#include <utility>

namespace qx
{
namespace
{

constexpr DWORD kEventPatience = 1'000;

// Sleeps of 1 ms. Raises the timer resolution at the first sleep and restores it in the destructor.
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

bool HasGroup(const ThreadedJobs& jobs, int group)
{
    for (const clsUTThreadedJob& job : jobs)
        if (job.IsOfGroup(group))
            return true;
    return false;
}

} // namespace

// Returns true if other threads hold jobs of the group. Returns false if the calling thread holds a job itself, which
// is the case if a job or a host calls Finalize or Close. Waiting for the other threads could then deadlock, because
// they may wait for the caller's job.
bool clsThreadedJobDispatcher::OthersHaveJobs(int group) const
{
    bool haveAny = false;
    for (const JobInHand* inHand = _firstInHand; inHand; inHand = inHand->Next())
    {
        if (inHand->ThreadId() == GetCurrentThreadId() && !inHand->IsEmpty())
            return false;
        haveAny = haveAny || inHand->MayHaveGroup(group);
    }
    return haveAny;
}

bool clsThreadedJobDispatcher::IsIdle() const
{
    const clsCriticalSectionLock lock(_lock);
    return _queued.IsEmpty() && _finished.IsEmpty() && _running.IsEmpty() && _callerJobs.IsEmpty();
}

bool clsThreadedJobDispatcher::JobsDone(int group) const
{
    const clsCriticalSectionLock lock(_lock);
    if (OthersHaveJobs(group))
        return false;
    if (group == 0)
        return IsIdle();
    for (const ThreadedJobs* jobs : {&_queued, &_finished, &_running, &_callerJobs})
        if (HasGroup(*jobs, group))
            return false;
    return true;
}

void clsThreadedJobDispatcher::ForgetForeignWorkers()
{
    const DWORD process = GetCurrentProcessId();
    if (_process == process)
        return;
    ThreadedJobs lost;
    const clsCriticalSectionLock lock(_lock);
    if (_process.exchange(process) == process)
        return;
    _firstInHand = nullptr; // the list's elements were on the stacks of the parent's threads
    lost = std::exchange(_running, {});
    ForgetWorkers();
}

void clsThreadedJobDispatcher::Abort(int group)
{
    ForgetForeignWorkers();
    JobInHand(*this).Release([&] { return DropJobs(group); });
    _jobEvent.Set();
}

// Must be called with the lock held. Removes the group's jobs from the lists and returns them, so that the caller
// releases them. Only the first abort removes jobs.
ThreadedJobs clsThreadedJobDispatcher::DropJobs(int group)
{
    ThreadedJobs dropped;
    if (std::exchange(_isAborted, true))
        return dropped;
    for (ThreadedJobs* jobs : {&_queued, &_finished, &_callerJobs})
    {
        ThreadedJobs kept;
        while (const clsUTThreadedJob* const job = jobs->First())
            jobs->MoveAt(0, job->IsOfGroup(group) ? dropped : kept);
        *jobs = std::move(kept);
    }
    return dropped;
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
    RunUntilDone([host](const clsUTThreadedJob& job) { job.Tell(host ? host : job.host.Get()); },
        [host](HANDLE jobEvent) { return !host || host->WaitForJobs(jobEvent) == 1; });
}

void clsThreadedJobDispatcher::Close()
{
    Abort(0);
    RunUntilDone([](const clsUTThreadedJob&) {}, [](HANDLE) { return true; });
}

// Runs jobs and passes each finished job to `handBack` until no jobs are left. If there is neither a job to run nor a
// finished job, calls `mayWait`. If `mayWait` returns true, waits for the event; otherwise `mayWait` has waited itself.
// Then checks whether all jobs are done, and yields the processor. Calls `mayWait` once even if the dispatcher is
// empty.
template <class HandBack, class MayWait>
void clsThreadedJobDispatcher::RunUntilDone(HandBack handBack, MayWait mayWait)
{
    ForgetForeignWorkers();
    ShortSleeps sleeps;
    JobInHand job(*this);
    for (bool isFirst = true;; isFirst = false)
    {
        // Run the job first and take a finished job afterwards, because the run may cause an abort, for example.
        const bool didRun = RunJob(job);
        if (didRun)
            job.Take([this] { return GetFinishedJob(); });
        if (job)
            handBack(*job);
        if (didRun || job)
            continue;
        if ((isFirst || !JobsDone(0)) && mayWait(_jobEvent.Get()) && !JobsDone(0))
            WaitForSingleObject(_jobEvent.Get(), kEventPatience);
        if (JobsDone(0))
            break;
        sleeps.Sleep();
    }
    // Wakes the next thread, because the event wakes only one and several may be waiting for the last job.
    _jobEvent.Set();
}

// Runs a job that must run on the calling thread, or a queued job that might never reach a worker; otherwise the
// calling thread could wait forever. If there is nothing to run, takes a finished job instead. That is the most common
// case, and it takes the lock only once.
bool clsThreadedJobDispatcher::RunJob(JobInHand& inHand)
{
    clsUTThreadedJob* queued = nullptr;
    bool isOwn = false;
    inHand.Take(
        [&]
        {
            ThreadedJobs own;
            isOwn = _callerJobs.MoveAt(0, own) != nullptr;
            if (!isOwn && MayLackWorkers())
                queued = MoveFirstToRunning();
            return isOwn || queued ? std::move(own) : GetFinishedJob();
        });
    if (isOwn)
        RunOwnJob(inHand);
    else if (queued)
    {
        // A destructor, so that a job that ends its thread, which unwinds the stack, also counts as done.
        struct Completion
        {
            ~Completion() { dispatcher.JobCompleted(job); }
            clsThreadedJobDispatcher& dispatcher;
            clsUTThreadedJob& job;
        } completion{*this, *queued};
        queued->Run();
    }
    return isOwn || queued;
}

void clsThreadedJobDispatcher::RunOwnJob(JobInHand& job)
{
    job->Run();
    if (job->job)
        job->job->GetResult(); // jobs may rely on this call
    if (!job->TellOwnHost())
        job.Keep();
}

void clsThreadedJobDispatcher::MoveRunning(const clsUTThreadedJob& job, ThreadedJobs& target)
{
    std::ptrdiff_t index = 0;
    for (const clsUTThreadedJob& running : _running)
    {
        if (&running == &job)
            break;
        ++index;
    }
    _running.MoveAt(index, target);
}

clsUTThreadedJob* clsThreadedJobDispatcher::MoveFirstToRunning()
{
    return _queued.MoveAt(0, _running);
}

} // namespace qx
