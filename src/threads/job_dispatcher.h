// Runs jobs on threads and brings them back.
#pragma once

#include "core/critical_section.h"
#include "threads/event.h"
#include "threads/threaded_job.h"

#include <cstddef>

namespace qx
{

// A list of jobs that owns them. A job is made in a list of its own, and moves from list to list without being copied.
using ThreadedJobs = WCValSList<clsUTThreadedJob>;

// The lists of a dispatcher, and what the thread that drives it does; a derived class brings the workers.
//
// A job is in one list at a time: queued, or to be run by the caller; then running, unless the caller runs it; then
// finished, unless its host took it. References of a job are given back before it counts as gone, so that who was told
// that all is done may take hosts and jobs away.
class clsThreadedJobDispatcher : public clsAllocationCountVerifier<clsThreadedJobDispatcher, 0>
{
public:
    explicit clsThreadedJobDispatcher(unsigned maximumWorkers) : _maximumWorkers(maximumWorkers) {}
    clsThreadedJobDispatcher(const clsThreadedJobDispatcher&) = delete;
    clsThreadedJobDispatcher& operator=(const clsThreadedJobDispatcher&) = delete;

    // The order of the virtual operations is part of the interface.

    virtual ~clsThreadedJobDispatcher() = default;
    virtual bool IsIdle() const;
    // Whether no job of the group is left; group 0 stands for all.
    virtual bool JobsDone(int group) const;
    // The one in the list.
    virtual void AddJob(ThreadedJobs job) = 0;
    // The first one, or none.
    virtual ThreadedJobs GetFinishedJob() = 0;
    virtual void Abort(int group);
    // By the worker that ran it.
    virtual void JobCompleted(clsUTThreadedJob& job) = 0;
    // Waits for a job. Null tells the worker to end.
    virtual clsUTThreadedJob* GetNextJob() = 0;
    virtual void ResetAbort();
    virtual bool IsAborted() const;
    // Until no job is left. Without a host the jobs' own hosts are told.
    virtual void Finalize(IUTThreadedJobHost* host);

    // Aborts, and until no job is left.
    void Close();

protected:
    class JobInHand; // threads/job_in_hand.h

    static constexpr std::size_t kCacheLine = 64;

    // Whether jobs that are queued may never be run by a worker.
    virtual bool MayLackWorkers() const = 0;

    // Both with the lock held.
    void MoveRunning(const clsUTThreadedJob& job, ThreadedJobs& target);
    clsUTThreadedJob* MoveFirstToRunning();

    // By lines of the processor's caches, which each round of the lock brings from one processor to another: what
    // adding a job changes, what completing one changes besides, and what seldom changes.
    alignas(kCacheLine) mutable clsCriticalSection _lock{4000}; // the lists and the flag
    ThreadedJobs _queued;
    alignas(kCacheLine) ThreadedJobs _finished;
    ThreadedJobs _running; // by workers
    alignas(kCacheLine) ThreadedJobs _callerJobs;
    const unsigned _maximumWorkers;
    bool _isAborted = false;
    clsEvent _jobEvent{clsEvent::Kind::AutoReset}; // something has changed for the thread that drives

private:
    template <class HandBack, class MayWait>
    void RunUntilDone(HandBack handBack, MayWait mayWait);
    bool RunJob(JobInHand& inHand);
    static void RunOwnJob(JobInHand& job);
    ThreadedJobs DropJobs(int group);
    bool OthersHaveJobs(int group) const;

    JobInHand* _firstInHand = nullptr;
};

} // namespace qx
