#include "threads/job_in_hand.h"

#include <timeapi.h>

#include <utility>

namespace qx
{
namespace
{

constexpr DWORD kEventPatience = 1'000;

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

bool HasGroup(const ThreadedJobs& jobs, int group)
{
    for (const clsUTThreadedJob& job : jobs)
        if (job.IsOfGroup(group))
            return true;
    return false;
}

} // namespace

// A thread that has a job in its hands itself, which a host or a job that waits for the end has, doesn't wait for those
// of others: they may wait for its own.
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

void clsThreadedJobDispatcher::Abort(int group)
{
    JobInHand(*this).Release([&] { return DropJobs(group); });
    _jobEvent.Set();
}

// With the lock held. Those that are to be released, by the first abort.
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

// Each job that is finished goes through `handBack`. Where there is none, and nothing to run, `mayWait` is asked
// whether to wait for the event, or has done so itself. Only then is there a reason to yield, and to ask for the end.
template <class HandBack, class MayWait>
void clsThreadedJobDispatcher::RunUntilDone(HandBack handBack, MayWait mayWait)
{
    ShortSleeps sleeps;
    JobInHand job(*this);
    for (;;)
    {
        // What the run job leads to comes before the finished one is taken, such as an abort.
        const bool didRun = RunJob(job);
        if (didRun)
            job.Take([this] { return GetFinishedJob(); });
        if (job)
            handBack(*job);
        if (didRun || job)
            continue;
        if (!JobsDone(0) && mayWait(_jobEvent.Get()))
            WaitForSingleObject(_jobEvent.Get(), kEventPatience);
        if (JobsDone(0))
            break;
        sleeps.Sleep();
    }
    // The event wakes one thread only, and several may wait for this end.
    _jobEvent.Set();
}

// Runs a job that waits for the caller, or one for which no worker comes: without that the driving thread would wait
// for ever. With nothing to run there is a finished job in hand, if there is one: most often this is so, and the lock
// is taken once for all of it.
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
        queued->Run();
        JobCompleted(*queued);
    }
    return isOwn || queued;
}

void clsThreadedJobDispatcher::RunOwnJob(JobInHand& job)
{
    job->Run();
    if (job->job)
        job->job->GetResult(); // a job may count on being asked
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
