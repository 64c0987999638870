// Runs jobs on worker threads and returns them.
#pragma once

#include "core/critical_section.h"
#include "threads/event.h"
#include "threads/threaded_job.h"

#include <windows.h>

#include <atomic>
#include <cstddef>

namespace qx
{

// A list that owns its jobs. Each job is created in a list of its own and moves between lists without being copied.
using ThreadedJobs = WCValSList<clsUTThreadedJob>;

// Base class of dispatchers: the job lists, and the work of the thread that finalizes or closes the dispatcher (the
// driving thread). A derived class supplies the workers.
//
// A job is in one list at a time. It starts as queued, or as a caller job if it must run on the caller's thread. Queued
// jobs become running. A job that has run becomes finished, unless its host has accepted it. All references of a job
// are released before the job counts as done, so that callers may destroy hosts and jobs as soon as everything is done.
class clsThreadedJobDispatcher : public clsAllocationCountVerifier<clsThreadedJobDispatcher, 0>
{
public:
    explicit clsThreadedJobDispatcher(unsigned maximumWorkers) : _maximumWorkers(maximumWorkers) {}
    clsThreadedJobDispatcher(const clsThreadedJobDispatcher&) = delete;
    clsThreadedJobDispatcher& operator=(const clsThreadedJobDispatcher&) = delete;

    // The vtable order is part of the interface.

    virtual ~clsThreadedJobDispatcher() = default;
    virtual bool IsIdle() const;
    // Returns true if no job of the group is left. Group 0 means all jobs.
    virtual bool JobsDone(int group) const;
    // Adds the job in the list.
    virtual void AddJob(ThreadedJobs job) = 0;
    // Returns the first finished job, or an empty list.
    virtual ThreadedJobs GetFinishedJob() = 0;
    virtual void Abort(int group);
    // Called by the worker that ran the job.
    virtual void JobCompleted(clsUTThreadedJob& job) = 0;
    // Waits for a job. Returns null if the worker must end.
    virtual clsUTThreadedJob* GetNextJob() = 0;
    virtual void ResetAbort();
    virtual bool IsAborted() const;
    // Runs until no job is left. Finished jobs are reported to `host`, or to their own hosts if `host` is null.
    virtual void Finalize(IUTThreadedJobHost* host);

    // Aborts all jobs and waits until none is left.
    void Close();

protected:
    class JobInHand; // threads/job_in_hand.h

    static constexpr std::size_t kCacheLine = 64;

    // Forgets the workers, which a forked child doesn't have, and releases the jobs that they were running, because
    // nobody would finish them. Must be called before the dispatcher is used.
    void ForgetForeignWorkers();
    // Forgets the workers, which belong to another process. Called with the lock held.
    virtual void ForgetWorkers() = 0;

    // Returns true if queued jobs might never reach a worker.
    virtual bool MayLackWorkers() const = 0;

    // Both must be called with the lock held.
    void MoveRunning(const clsUTThreadedJob& job, ThreadedJobs& target);
    clsUTThreadedJob* MoveFirstToRunning();

    // Grouped by cache lines, because these move between processors with each use of the lock: data that change when a
    // job is added, data that also change when one is completed, and data that rarely change.
    alignas(kCacheLine) mutable clsCriticalSection _lock{4000}; // protects the lists and the flag
    ThreadedJobs _queued;
    alignas(kCacheLine) ThreadedJobs _finished;
    ThreadedJobs _running; // on workers
    alignas(kCacheLine) ThreadedJobs _callerJobs;
    const unsigned _maximumWorkers;
    bool _isAborted = false;
    clsEvent _jobEvent{clsEvent::Kind::AutoReset}; // wakes the driving thread after a change

private:
    template <class HandBack, class MayWait>
    void RunUntilDone(HandBack handBack, MayWait mayWait);
    bool RunJob(JobInHand& inHand);
    static void RunOwnJob(JobInHand& job);
    ThreadedJobs DropJobs(int group);
    bool OthersHaveJobs(int group) const;

    std::atomic<DWORD> _process = GetCurrentProcessId(); // the process that has the workers
    JobInHand* _firstInHand = nullptr;
};

} // namespace qx
