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

// A job in the hands of a thread that drives, for as long as it is run or its host is told. It stands in no list then,
// but isn't gone yet for the other threads that wait for the end of all. It is released at the end, unless it is kept.
class clsThreadedJobDispatcher::JobInHand
{
public:
    // `take` is called with the lock held, and may give null.
    template <class Take>
    JobInHand(clsThreadedJobDispatcher& dispatcher, Take take) : _dispatcher(dispatcher)
    {
        const clsCriticalSectionLock lock(dispatcher._lock);
        _job = take();
        if (_job)
            _next = std::exchange(dispatcher._firstInHand, this);
    }
    JobInHand(const JobInHand&) = delete;
    JobInHand& operator=(const JobInHand&) = delete;
    // Without the lock, since the end of the caller's objects may take any time; it still counts meanwhile.
    ~JobInHand()
    {
        if (!_job)
            return;
        std::unique_ptr<clsUTThreadedJob> released;
        {
            const clsCriticalSectionLock lock(_dispatcher._lock);
            released = std::move(_job);
        }
        released.reset();
        const clsCriticalSectionLock lock(_dispatcher._lock);
        LeaveChain();
    }

    explicit operator bool() const { return _job != nullptr; }
    const clsUTThreadedJob& operator*() const { return *_job; }
    const clsUTThreadedJob* operator->() const { return _job.get(); }
    DWORD ThreadId() const { return _threadId; }
    const JobInHand* Next() const { return _next; }

    // As one that is finished.
    void Keep()
    {
        const clsCriticalSectionLock lock(_dispatcher._lock);
        _dispatcher._finished.Append(std::move(_job));
        LeaveChain();
        _dispatcher._jobEvent.Set();
    }

private:
    void LeaveChain()
    {
        JobInHand** link = &_dispatcher._firstInHand;
        while (*link != this)
            link = &(*link)->_next;
        *link = _next;
    }

    clsThreadedJobDispatcher& _dispatcher;
    const DWORD _threadId = GetCurrentThreadId();
    std::unique_ptr<clsUTThreadedJob> _job;
    JobInHand* _next = nullptr;
};

// A thread that has a job in its hands itself, which a host or a job that waits for the end has, doesn't wait for those
// of others: they may wait for its own.
bool clsThreadedJobDispatcher::OthersHaveJobs(int group) const
{
    bool haveAny = false;
    for (const JobInHand* inHand = _firstInHand; inHand; inHand = inHand->Next())
    {
        if (inHand->ThreadId() == GetCurrentThreadId())
            return false;
        haveAny = haveAny || !*inHand || (*inHand)->IsOfGroup(group); // one without its job is being released
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
    if (const JobInHand job{*this, [this]
            {
                return GetFinishedJob();
            }})
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
    if (const JobInHand job{*this,
            [this]
            {
                return GetFinishedJob();
            }};
        job || didRun)
        return true;
    if (!JobsDone(0))
        WaitForSingleObject(_jobEvent.Get(), eventPatience);
    return false;
}

bool clsThreadedJobDispatcher::RunOwnJob()
{
    JobInHand job(*this, [this] { return TakeFirst(_callerJobs); });
    if (!job)
        return RunQueuedJob();
    job->Run();
    if (job->job)
        job->job->GetResult(); // a job may count on being asked
    if (!job->TellOwnHost())
        job.Keep();
    return true;
}

// For the case that no worker comes for a job: without this the driving thread would wait for ever.
bool clsThreadedJobDispatcher::RunQueuedJob()
{
    clsUTThreadedJob* job = nullptr;
    {
        const clsCriticalSectionLock lock(_lock);
        if (MayLackWorkers())
            job = MoveFirstToRunning();
    }
    if (!job)
        return false;
    job->Run();
    JobCompleted(*job);
    return true;
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
