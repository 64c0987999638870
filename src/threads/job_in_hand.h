// A job that a thread has in its hands.
#pragma once

#include "threads/job_dispatcher.h"

#include <atomic>
#include <utility>

namespace qx
{

// The job that a driving thread runs or tells the host of, and those that it, a worker or an abort releases. They stand
// in no list, but aren't gone yet for the other threads that wait for the end of all. A job is released without the
// lock, since the end of the caller's objects may take any time.
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

    // `take` is called with the lock held, and may give none; whether there is one. The former job is released.
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

    // Releases what `take` gives, which is called with the lock held.
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

    // With the lock held, as for all that looks at those of other threads.
    bool IsEmpty() const { return _job.IsEmpty() && !_isReleasing.load(std::memory_order_acquire); }
    bool MayHaveGroup(int group) const
    {
        return _isReleasing.load(std::memory_order_acquire) || (*this && (*this)->IsOfGroup(group));
    }
    DWORD ThreadId() const { return _threadId; }

    // As one that is finished.
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
    std::atomic<bool> _isReleasing = false; // becomes true with the lock held
    JobInHand* _next = nullptr;
};

} // namespace qx
