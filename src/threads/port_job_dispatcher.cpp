#include "threads/port_job_dispatcher.h"

#include "threads/processor_count.h"

#include <new>

namespace qx
{
namespace
{

constexpr DWORD packetBytes = 8;

long long CounterNow()
{
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

} // namespace

std::atomic<int> DispatcherNumber::alive = 0;

clsThreadedJobProcessorUsingIoCompletionPort::clsThreadedJobProcessorUsingIoCompletionPort(
    clsThreadedJobDispatcherUsingIoCompletionPort& dispatcher, const wchar_t* name)
    : clsThreadBase(name),
      _dispatcher(dispatcher)
{
}

clsThreadedJobProcessorUsingIoCompletionPort::~clsThreadedJobProcessorUsingIoCompletionPort()
{
    ThreadEnd(false, 1000, true);
}

unsigned clsThreadedJobProcessorUsingIoCompletionPort::ThreadProc()
{
    for (clsUTThreadedJob* job = _dispatcher.GetNextJob(); job; job = _dispatcher.CompleteAndGetNextJob(*job))
    {
        const ThreadSpan span(Marks(), job->name.Text());
        job->Run();
    }
    --_dispatcher._activeWorkers;
    return 0;
}

// Without a port there are no workers, and the thread that finalizes or closes runs the jobs itself.
clsThreadedJobDispatcherUsingIoCompletionPort::clsThreadedJobDispatcherUsingIoCompletionPort(
    unsigned maximumWorkers, const wchar_t* name)
    : clsThreadedJobDispatcher(qx::MaximumWorkers(maximumWorkers, maximumWorkers == 0 ? ProcessorCount() : 0, number)),
      _name(name),
      _port(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, _maximumWorkers), true)
{
}

clsThreadedJobDispatcherUsingIoCompletionPort::~clsThreadedJobDispatcherUsingIoCompletionPort()
{
    // Any packet tells a worker to end now: those of jobs that were aborted may stand in front of these, in millions.
    _isClosing = true;
    for (std::size_t worker = 0; worker < _workers.Count(); ++worker)
        PostQueuedCompletionStatus(_port.Get(), 0, 0, nullptr);
    _workers.Clear();
    _port.Release();
}

void clsThreadedJobDispatcherUsingIoCompletionPort::AddJob(ThreadedJobs job)
{
    clsUTThreadedJob* const packet = job.First();
    {
        const clsCriticalSectionLock lock(_lock);
        if (_isAborted)
            return; // the record and its references go with the argument
        if (packet->CanRunOnWorker())
        {
            if ((!_queued.IsEmpty() || _workers.IsEmpty()) && _workers.Count() < _maximumWorkers)
                StartWorker();
            job.MoveAt(0, _queued);
        }
        else
        {
            job.MoveAt(0, _callerJobs);
            _jobEvent.Set(); // whoever waits for jobs may run this one
        }
    }
    if (!PostQueuedCompletionStatus(_port.Get(), packetBytes, 0, reinterpret_cast<OVERLAPPED*>(packet)))
    {
        _lacksPackets = true;
        _jobEvent.Set();
    }
}

// One that can't be started is not missed: the next job tries again.
void clsThreadedJobDispatcherUsingIoCompletionPort::StartWorker()
{
    if (!_port.IsValid())
        return;
    // In the list before it runs: one that couldn't be put there would have to be terminated.
    auto& worker = _workers.Append(std::make_unique<clsThreadedJobProcessorUsingIoCompletionPort>(*this, _name.Text()));
    ++_activeWorkers;
    bool isStarted = false;
    try
    {
        isStarted = worker->ThreadStart(THREAD_PRIORITY_NORMAL);
    }
    catch (const std::bad_alloc&)
    {
        // the job is queued all the same
    }
    if (isStarted)
        return;
    --_activeWorkers;
    _workers.TakeAt(static_cast<std::ptrdiff_t>(_workers.Count()) - 1);
}

clsUTThreadedJob* clsThreadedJobDispatcherUsingIoCompletionPort::GetNextJob()
{
    for (;;)
    {
        const long long begin = CounterNow();
        const Packet packet = TakePacket(INFINITE);
        _waitTime.fetch_add(CounterNow() - begin, std::memory_order_relaxed);
        if (packet != Packet::leave)
            return nullptr;
        const clsCriticalSectionLock lock(_lock);
        if (clsUTThreadedJob* const job = TakeJob())
            return job;
    }
}

// As JobCompleted() and GetNextJob() do, in one round of the lock as long as there are packets.
clsUTThreadedJob* clsThreadedJobDispatcherUsingIoCompletionPort::CompleteAndGetNextJob(clsUTThreadedJob& job)
{
    const Packet packet = TakePacket(0);
    {
        const clsCriticalSectionLock lock(_lock);
        JobCompleted(job);
        clsUTThreadedJob* const next = packet == Packet::leave ? TakeJob() : nullptr;
        if (next || packet == Packet::end)
            return next;
    }
    return GetNextJob();
}

clsThreadedJobDispatcherUsingIoCompletionPort::Packet clsThreadedJobDispatcherUsingIoCompletionPort::TakePacket(
    DWORD milliseconds)
{
    DWORD bytes = 0;
    ULONG_PTR key = 0;
    OVERLAPPED* packet = nullptr;
    const BOOL isThere = GetQueuedCompletionStatus(_port.Get(), &bytes, &key, &packet, milliseconds);
    if (_isClosing || (isThere && !packet))
        return Packet::end;
    return isThere ? Packet::leave : Packet::none;
}

// With the lock held.
clsUTThreadedJob* clsThreadedJobDispatcherUsingIoCompletionPort::TakeJob()
{
    clsUTThreadedJob* const job = MoveFirstToRunning();
    _jobsHandedOut += job != nullptr;
    return job;
}

// The host is told and the job released under the lock: see clsThreadedJobDispatcher.
void clsThreadedJobDispatcherUsingIoCompletionPort::JobCompleted(clsUTThreadedJob& job)
{
    const clsCriticalSectionLock lock(_lock);
    ThreadedJobs completed;
    MoveRunning(job, completed);
    if (job.TellOwnHost())
        completed.Clear();
    else
        completed.MoveAt(0, _finished);
    _jobEvent.Set();
}

ThreadedJobs clsThreadedJobDispatcherUsingIoCompletionPort::GetFinishedJob()
{
    const clsCriticalSectionLock lock(_lock);
    ThreadedJobs first;
    if (_finished.MoveAt(0, first))
        _jobEvent.Set();
    return first;
}

long long clsThreadedJobDispatcherUsingIoCompletionPort::JobsHandedOut() const
{
    const clsCriticalSectionLock lock(_lock);
    return _jobsHandedOut;
}

std::size_t clsThreadedJobDispatcherUsingIoCompletionPort::WorkerCount() const
{
    const clsCriticalSectionLock lock(_lock);
    return _workers.Count();
}

} // namespace qx
