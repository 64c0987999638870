// The job dispatcher whose workers wait at a completion port.
#pragma once

#include "threads/job_dispatcher.h"
#include "threads/thread_base.h"

#include <atomic>
#include <memory>

namespace qx
{

class clsThreadedJobDispatcherUsingIoCompletionPort;

// A worker.
class clsThreadedJobProcessorUsingIoCompletionPort final : public clsThreadBase
{
public:
    clsThreadedJobProcessorUsingIoCompletionPort(
        clsThreadedJobDispatcherUsingIoCompletionPort& dispatcher, const wchar_t* name);
    ~clsThreadedJobProcessorUsingIoCompletionPort() override;

    unsigned ThreadProc() override;
    unsigned GetStackSize() const override { return 0x10000; }

private:
    clsThreadedJobDispatcherUsingIoCompletionPort& _dispatcher;
};

// How many dispatchers of the process are alive, with this one. A base, so that one which can't be made whole counts no
// longer than that.
struct DispatcherNumber
{
    DispatcherNumber() : number(++alive) {}
    DispatcherNumber(const DispatcherNumber&) = delete;
    DispatcherNumber& operator=(const DispatcherNumber&) = delete;
    ~DispatcherNumber() { --alive; }

    const int number;

private:
    static std::atomic<int> alive;
};

// A worker that has run a job, and released it if its host took it, takes the next one of the queue at once, or watches
// the queue for a moment, and only then waits at the port. A packet there wakes one worker, and is posted only where
// one waits and those that are awake or woken already can't take all that is queued: each packet costs two calls of the
// system, and a thread to be woken. Should one not have been posted, the thread that finalizes or closes helps.
class clsThreadedJobDispatcherUsingIoCompletionPort final : private DispatcherNumber, public clsThreadedJobDispatcher
{
public:
    // 0 for as many workers as the process has processors for.
    clsThreadedJobDispatcherUsingIoCompletionPort(unsigned maximumWorkers, const wchar_t* name);
    ~clsThreadedJobDispatcherUsingIoCompletionPort() override;

    void AddJob(ThreadedJobs job) override;
    ThreadedJobs GetFinishedJob() override;
    void JobCompleted(clsUTThreadedJob& job) override;
    clsUTThreadedJob* GetNextJob() override;

    // The ticks of the performance counter that workers spent waiting.
    long long WaitTime() const { return _waitTime; }
    long long JobsHandedOut() const;
    unsigned MaximumWorkers() const { return _maximumWorkers; }
    std::size_t WorkerCount() const;

protected:
    bool MayLackWorkers() const override { return _activeWorkers == 0 || _lacksPackets; }

private:
    friend class clsThreadedJobProcessorUsingIoCompletionPort;

    void StartWorker();
    void RunJobs(ThreadMarks* marks);
    clsUTThreadedJob* CompleteAndGetNextJob(clsUTThreadedJob& job, JobInHand& inHand);
    ThreadedJobs Complete(clsUTThreadedJob& job);
    void SetHasQueued(bool hasQueued);
    bool NeedsPacket() const;
    void PostPacket();
    bool WaitForPacket();
    void WatchQueue();
    clsUTThreadedJob* TakeJob();

    const String _name;
    WCValSList<std::unique_ptr<clsThreadedJobProcessorUsingIoCompletionPort>> _workers;
    std::atomic<int> _activeWorkers = 0; // not yet at their end
    std::atomic<bool> _isClosing = false;
    std::atomic<bool> _lacksPackets = false; // one couldn't be posted, so a job may stay queued
    std::atomic<bool> _hasQueued = false;    // for whoever watches without the lock
    std::atomic<bool> _isWatched = false;    // by a worker that takes what it sees
    std::size_t _waitingWorkers = 0;         // at the port, or on their way there
    std::size_t _packets = 0;                // posted, and not yet seen by the workers that they are for
    clsGenericHandleObjectAutoRelease _port;
    alignas(kCacheLine) std::atomic<long long> _waitTime = 0;
    long long _jobsHandedOut = 0;
};

} // namespace qx
