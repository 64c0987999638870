// A job that is temporarily held by a thread.
#pragma once

#include "threads/job_dispatcher.h"

#include <atomic>
#include <utility>

namespace qx
{

// The job that a driving thread runs or reports to its host, and jobs that are being released by a driving thread, a
// worker or an abort. They aren't in any list, but still count as unfinished for other threads that wait for the end.
// Jobs are released without the lock, because destroying the caller's objects may take arbitrarily long.
class clsThreadedJobDispatcher::JobInHand
{
public:
    explicit JobInHand(clsThreadedJobDispatcher& dispatcher) : _dispatcher(dispatcher)
    {
        const clsCriticalSectionLock lock(_dispatcher._lock);
        _next = std::exchange(_dispatcher._firstInHand, this);
    }
    JobInHand(const JobInHand&) = delete;
    JobInHand& operator=(const JobInHand&) = delete;
    ~JobInHand()
    {
        Take([] { return ThreadedJobs(); });
        const clsCriticalSectionLock lock(_dispatcher._lock);
        JobInHand** link = &_dispatcher._firstInHand;
        while (*link != this)
            link = &(*link)->_next;
        *link = _next;
    }

    // Takes the job that `take` returns and releases the previous one. `take` is called with the lock held and may
    // return an empty list. Returns true if there is a job.
    template <class Source>
    bool Take(Source take)
    {
        Release(
            [&]
            {
                ThreadedJobs former = std::move(_job);
                _job = take();
                return former;
            });
        return !_job.IsEmpty();
    }

    // Releases the jobs that `take` returns. `take` is called with the lock held.
    template <class Source>
    void Release(Source take)
    {
        ThreadedJobs released;
        {
            const clsCriticalSectionLock lock(_dispatcher._lock);
            released = take();
            _isReleasing.store(!released.IsEmpty(), std::memory_order_relaxed);
        }
        released.Clear();
        _isReleasing.store(false, std::memory_order_release);
    }

    explicit operator bool() const { return !_job.IsEmpty(); }
    const clsUTThreadedJob& operator*() const { return *_job.First(); }
    const clsUTThreadedJob* operator->() const { return _job.First(); }
    const JobInHand* Next() const { return _next; }

    // Must be called with the lock held, like all functions that read the state of other threads.
    bool IsEmpty() const { return _job.IsEmpty() && !_isReleasing.load(std::memory_order_acquire); }
    bool MayHaveGroup(int group) const
    {
        return _isReleasing.load(std::memory_order_acquire) || (*this && (*this)->IsOfGroup(group));
    }
    DWORD ThreadId() const { return _threadId; }

    // Moves the job to the finished jobs.
    void Keep()
    {
        const clsCriticalSectionLock lock(_dispatcher._lock);
        _job.MoveAt(0, _dispatcher._finished);
        _dispatcher._jobEvent.Set();
    }

private:
    clsThreadedJobDispatcher& _dispatcher;
    const DWORD _threadId = GetCurrentThreadId();
    ThreadedJobs _job;                      // at most one
    std::atomic<bool> _isReleasing = false; // set to true only with the lock held
    JobInHand* _next = nullptr;
};

} // namespace qx
