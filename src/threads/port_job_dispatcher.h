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

// A packet at the port is leave for one worker to take one job, the first that is queued. It bears the address of a
// job, which nobody looks at: the job may be gone by then, or be one for the caller. There are never fewer packets than
// queued jobs, so each job finds its worker; a packet that finds no job is passed over. Should a packet not have been
// posted, the thread that finalizes or closes helps.
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

    enum class Packet
    {
        none,
        leave, // to take a job
        end    // of the worker
    };

    void StartWorker();
    clsUTThreadedJob* CompleteAndGetNextJob(clsUTThreadedJob& job);
    Packet TakePacket(DWORD milliseconds);
    clsUTThreadedJob* TakeJob();

    std::atomic<long long> _waitTime = 0;
    long long _jobsHandedOut = 0;
    const String _name;
    WCValSList<std::unique_ptr<clsThreadedJobProcessorUsingIoCompletionPort>> _workers;
    std::atomic<int> _activeWorkers = 0; // not yet at their end
    std::atomic<bool> _isClosing = false;
    std::atomic<bool> _lacksPackets = false; // one couldn't be posted, so a job may stay queued
    clsGenericHandleObjectAutoRelease _port;
};

} // namespace qx
