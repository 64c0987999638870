#include "threads/port_job_dispatcher.h"

#include "threads/job_in_hand.h"
#include "threads/processor_count.h"

#include <new>
#include <utility>

namespace qx
{
namespace
{

constexpr DWORD kPacketBytes = 8;

// The packet that wakes a worker. A packet without this structure ends the worker.
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
    _dispatcher.RunJobs(Markers());
    return 0;
}

// Without a port there are no workers, and the thread that finalizes or closes the dispatcher runs all jobs.
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
    bool areTold = true;
    for (std::size_t worker = 0; worker < _workers.Count(); ++worker)
        areTold = PostQueuedCompletionStatus(_port.Get(), 0, 0, nullptr) && areTold;
    if (!areTold) // no memory for a packet; closing the port ends the waits as well
        _port.Release();
    _workers.Clear();
    _port.Release();
}

// The port may still contain packets for the former workers, so it is replaced.
void clsThreadedJobDispatcherUsingIoCompletionPort::ForgetWorkers()
{
    _workers.Clear();
    _activeWorkers = 0;
    _waitingWorkers = 0;
    _packets = 0;
    _isWatched = false;
    _lacksPackets = false;
    _port.Take(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, _maximumWorkers), true);
}

void clsThreadedJobDispatcherUsingIoCompletionPort::AddJob(ThreadedJobs job)
{
    ForgetForeignWorkers();
    {
        const clsCriticalSectionLock lock(_lock);
        if (_isAborted)
            return; // the destructor of the parameter releases the job
        if (!job.First()->CanRunOnWorker())
        {
            job.MoveAt(0, _callerJobs);
            _jobEvent.Set(); // a waiting driving thread may run it
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

// Must be called with the lock held. Doesn't write an unchanged value, because that would invalidate the cache line of
// the readers.
void clsThreadedJobDispatcherUsingIoCompletionPort::SetHasQueued(bool hasQueued)
{
    if (_hasQueued.load(std::memory_order_relaxed) != hasQueued)
        _hasQueued.store(hasQueued, std::memory_order_relaxed);
}

// Must be called with the lock held.
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

// A failure to start a worker is ignored; the next job tries again.
void clsThreadedJobDispatcherUsingIoCompletionPort::StartWorker()
{
    if (!_port.IsValid())
        return;
    // Add the worker to the list before it starts: if the list can't grow, no running thread has to be terminated.
    auto& worker = _workers.Append(std::make_unique<clsThreadedJobProcessorUsingIoCompletionPort>(*this, _name.Text()));
    ++_activeWorkers;
    bool isStarted = false;
    try
    {
        isStarted = worker->ThreadStart(THREAD_PRIORITY_NORMAL);
    }
    catch (const std::bad_alloc&)
    {
        // the job is queued anyway
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

// Watches the queue about as long as waking a thread takes, in case the next job follows immediately; nobody has to
// wake this thread then. Checks only rarely, so as not to slow down threads that add jobs: taking a few jobs together
// is cheaper than taking each one separately.
void clsThreadedJobDispatcherUsingIoCompletionPort::WatchQueue()
{
    constexpr int kLooks = 4, kPauses = 400;
    if (_hasQueued || _isWatched.exchange(true))
        return;
    for (int look = 0; look < kLooks && !_hasQueued && !_isClosing; ++look)
        for (int pause = 0; pause < kPauses; ++pause)
            YieldProcessor();
    _isWatched = false; // cleared before the lock is taken, because the next job may need another worker
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

// The loop of each worker.
void clsThreadedJobDispatcherUsingIoCompletionPort::RunJobs(clsConcurrencyVisualizerMarkerSeries* markers)
{
    // The destructor also runs if a job ends the thread, which unwinds the stack. The job then counts as done.
    struct Worker
    {
        ~Worker()
        {
            if (job)
                dispatcher.JobCompleted(*job);
            --dispatcher._activeWorkers;
        }
        clsThreadedJobDispatcherUsingIoCompletionPort& dispatcher;
        clsUTThreadedJob* job = nullptr;
    };
    Worker worker{*this};
    JobInHand inHand(*this);
    worker.job = GetNextJob();
    while (worker.job)
    {
        {
            // A name is text, never a format.
            const clsConcurrencyVisualizerSpan span(markers, L"%s", worker.job->name.Text());
            worker.job->Run();
        }
        worker.job = CompleteAndGetNextJob(*std::exchange(worker.job, nullptr), inHand);
    }
}

// Does the work of JobCompleted() and GetNextJob() with a single use of the lock, unless the queue is empty or the
// completed job must be released. A release may take arbitrarily long, and the next job must not wait for it while
// other workers sleep.
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

// Must be called with the lock held.
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

// Must be called with the lock held, which is kept while the host is notified. Returns the job if the host accepts it,
// otherwise an empty list.
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
