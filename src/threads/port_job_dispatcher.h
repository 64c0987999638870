// A job dispatcher whose workers wait at an I/O completion port.
#pragma once

#include "threads/job_dispatcher.h"
#include "threads/thread_base.h"

#include <atomic>
#include <memory>

namespace qx
{

class clsThreadedJobDispatcherUsingIoCompletionPort;

// A worker thread.
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

// Counts the dispatchers of the process, including this one. A base class, so that the count is corrected if the
// constructor of the derived class throws.
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

// After a job, a worker takes the next queued job immediately. If there is none, it watches the queue for a moment
// before it waits at the port. A packet wakes one worker. Each packet costs two system calls and a thread switch, so
// one is posted only if a worker is waiting and the workers that are awake or already woken can't take all queued jobs.
// If posting fails, the thread that finalizes or closes the dispatcher runs the jobs.
class clsThreadedJobDispatcherUsingIoCompletionPort final : private DispatcherNumber, public clsThreadedJobDispatcher
{
public:
    // 0 selects one worker less than the number of processors, but at least one.
    clsThreadedJobDispatcherUsingIoCompletionPort(unsigned maximumWorkers, const wchar_t* name);
    ~clsThreadedJobDispatcherUsingIoCompletionPort() override;

    void AddJob(ThreadedJobs job) override;
    ThreadedJobs GetFinishedJob() override;
    void JobCompleted(clsUTThreadedJob& job) override;
    clsUTThreadedJob* GetNextJob() override;

    // Returns the time that workers spent waiting, in ticks of the performance counter.
    long long WaitTime() const { return _waitTime; }
    long long JobsHandedOut() const;
    unsigned MaximumWorkers() const { return _maximumWorkers; }
    std::size_t WorkerCount() const;

protected:
    void ForgetWorkers() override;
    bool MayLackWorkers() const override { return _activeWorkers == 0 || _lacksPackets; }

private:
    friend class clsThreadedJobProcessorUsingIoCompletionPort;

    void StartWorker();
    void RunJobs(clsConcurrencyVisualizerMarkerSeries* markers);
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
    std::atomic<int> _activeWorkers = 0; // workers that haven't ended yet
    std::atomic<bool> _isClosing = false;
    std::atomic<bool> _lacksPackets = false; // posting failed, so a job may stay queued
    std::atomic<bool> _hasQueued = false;    // readable without the lock
    std::atomic<bool> _isWatched = false;    // a worker watches the queue and will take the next job
    std::size_t _waitingWorkers = 0;         // at the port, or about to wait there
    std::size_t _packets = 0;                // posted, but not yet received by a worker
    clsGenericHandleObjectAutoRelease _port;
    alignas(kCacheLine) std::atomic<long long> _waitTime = 0;
    long long _jobsHandedOut = 0;
};

} // namespace qx
