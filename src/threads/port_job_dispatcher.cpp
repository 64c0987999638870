#include "threads/port_job_dispatcher.h"

#include "threads/job_in_hand.h"
#include "threads/processor_count.h"

#include <new>

namespace qx
{
namespace
{

constexpr DWORD kPacketBytes = 8;

// What a packet bears that wakes a worker; one without anything is for its end.
OVERLAPPED wakeUp{};

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
    _dispatcher.RunJobs(Marks());
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
    _isClosing = true;
    for (std::size_t worker = 0; worker < _workers.Count(); ++worker)
        PostQueuedCompletionStatus(_port.Get(), 0, 0, nullptr);
    _workers.Clear();
    _port.Release();
}

void clsThreadedJobDispatcherUsingIoCompletionPort::AddJob(ThreadedJobs job)
{
    {
        const clsCriticalSectionLock lock(_lock);
        if (_isAborted)
            return; // the record and its references go with the argument
        if (!job.First()->CanRunOnWorker())
        {
            job.MoveAt(0, _callerJobs);
            _jobEvent.Set(); // whoever waits for jobs may run this one
            return;
        }
        if ((!_queued.IsEmpty() || _workers.IsEmpty()) && _workers.Count() < _maximumWorkers)
            StartWorker();
        job.MoveAt(0, _queued);
        SetHasQueued(true);
        if (!NeedsPacket())
            return;
        ++_packets;
    }
    PostPacket();
}

// With the lock held. A value that is there already isn't written, which would take the line from those that read it.
void clsThreadedJobDispatcherUsingIoCompletionPort::SetHasQueued(bool hasQueued)
{
    if (_hasQueued.load(std::memory_order_relaxed) != hasQueued)
        _hasQueued.store(hasQueued, std::memory_order_relaxed);
}

// With the lock held.
bool clsThreadedJobDispatcherUsingIoCompletionPort::NeedsPacket() const
{
    return _packets < _waitingWorkers && _packets + _isWatched < _queued.Count();
}

void clsThreadedJobDispatcherUsingIoCompletionPort::PostPacket()
{
    if (PostQueuedCompletionStatus(_port.Get(), kPacketBytes, 0, &wakeUp))
        return;
    const clsCriticalSectionLock lock(_lock);
    --_packets;
    _lacksPackets = true;
    _jobEvent.Set();
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
    WatchQueue();
    for (bool wasWoken = false;; wasWoken = true)
    {
        {
            const clsCriticalSectionLock lock(_lock);
            if (_isClosing)
                return nullptr;
            if (wasWoken)
            {
                --_waitingWorkers;
                --_packets;
            }
            if (clsUTThreadedJob* const job = TakeJob())
                return job;
            ++_waitingWorkers;
        }
        if (!WaitForPacket())
            return nullptr;
    }
}

// For a job that is likely to come at once: looks out for it about as long as it takes to be woken, so that nobody has
// to wake this thread. Seldom, so as not to hold up those that add: a few jobs together cost less than each by itself.
void clsThreadedJobDispatcherUsingIoCompletionPort::WatchQueue()
{
    constexpr int kLooks = 4, kPauses = 400;
    if (_hasQueued || _isWatched.exchange(true))
        return;
    for (int look = 0; look < kLooks && !_hasQueued && !_isClosing; ++look)
        for (int pause = 0; pause < kPauses; ++pause)
            YieldProcessor();
    _isWatched = false; // before the lock is taken: the next job may need somebody else
}

bool clsThreadedJobDispatcherUsingIoCompletionPort::WaitForPacket()
{
    DWORD bytes = 0;
    ULONG_PTR key = 0;
    OVERLAPPED* packet = nullptr;
    const long long begin = CounterNow();
    const BOOL isThere = GetQueuedCompletionStatus(_port.Get(), &bytes, &key, &packet, INFINITE);
    _waitTime.fetch_add(CounterNow() - begin, std::memory_order_relaxed);
    return isThere && packet;
}

// By each worker.
void clsThreadedJobDispatcherUsingIoCompletionPort::RunJobs(ThreadMarks* marks)
{
    {
        JobInHand inHand(*this);
        for (clsUTThreadedJob* job = GetNextJob(); job; job = CompleteAndGetNextJob(*job, inHand))
        {
            const ThreadSpan span(marks, job->name.Text());
            job->Run();
        }
    }
    --_activeWorkers;
}

// As JobCompleted() and GetNextJob() do, in one round of the lock as long as there are jobs and none to release, which
// may take any time: the next job would wait for that, with other workers asleep.
clsUTThreadedJob* clsThreadedJobDispatcherUsingIoCompletionPort::CompleteAndGetNextJob(
    clsUTThreadedJob& job, JobInHand& inHand)
{
    clsUTThreadedJob* next = nullptr;
    inHand.Release(
        [&]
        {
            ThreadedJobs taken = Complete(job);
            if (taken.IsEmpty() && !_isClosing)
                next = TakeJob();
            return taken;
        });
    _jobEvent.Set();
    return next ? next : GetNextJob();
}

// With the lock held.
clsUTThreadedJob* clsThreadedJobDispatcherUsingIoCompletionPort::TakeJob()
{
    clsUTThreadedJob* const job = MoveFirstToRunning();
    SetHasQueued(!_queued.IsEmpty());
    _jobsHandedOut += job != nullptr;
    return job;
}

void clsThreadedJobDispatcherUsingIoCompletionPort::JobCompleted(clsUTThreadedJob& job)
{
    JobInHand(*this).Release([&] { return Complete(job); });
    _jobEvent.Set();
}

// With the lock held, also while the host is told. The job, if the host takes it.
ThreadedJobs clsThreadedJobDispatcherUsingIoCompletionPort::Complete(clsUTThreadedJob& job)
{
    ThreadedJobs completed;
    MoveRunning(job, completed);
    if (!job.TellOwnHost())
        completed.MoveAt(0, _finished);
    return completed;
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
