#include "trace/trace_worker.h"

#include "base/fail.h"
#include "base/futex.h"
#include "base/mutex.h"
#include "trace/event_ring.h"
#include "trace/trace_file.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include <pthread.h>
#include <sched.h>
#include <signal.h>

namespace qxplatform
{

// What a running thread uses. Freed by the caller who joins the thread.
struct TraceWorker
{
    SessionBlock block;
    SessionChanged changed = nullptr;
    TraceSession session;
    TraceSession tried; // the block's last session; `session` has none if its file couldn't be opened
    std::atomic<bool> isStopping = false;
    pthread_t thread{};
};

constinit std::atomic<bool> isTraceRecording = false;
constinit std::atomic<std::uint8_t> traceLevel = 0;

namespace
{

constexpr long kWritePause = 10'000'000; // nanoseconds between two writes to the file
constexpr std::size_t kStackSize = 256 * 1024;

constinit Mutex workerLock; // protects the pointer, and what recording begins or ends with
constinit TraceWorker* worker = nullptr;
constinit LONG hurries = 0;

// One thread at a time writes: the layer's, or the one that ends the process. Not a mutex, because a fork doesn't wait
// for a write.
constinit std::atomic<bool> isWriting = false;
constinit TraceFile traceFile;

bool BeginWriting()
{
    return !isWriting.exchange(true, std::memory_order_acquire);
}

void WriteEvents()
{
    if (!BeginWriting())
        return;
    try
    {
        traceFile.WriteEvents();
    }
    catch (const std::bad_alloc&)
    {
        // the events stay in the rings
    }
    isWriting.store(false, std::memory_order_release);
}

void Follow(TraceWorker& self, TraceSession session)
{
    if (self.session.id != 0 && session.id != self.session.id)
    {
        isTraceRecording.store(false, std::memory_order_release);
        WriteEvents();
    }
    while (!BeginWriting())
        sched_yield();
    if (session.id != self.session.id)
        traceFile.Close();
    if (session.id != 0 && !traceFile.Open(session.file))
        session = TraceSession(); // without a file, nothing is recorded
    isWriting.store(false, std::memory_order_release);
    traceLevel.store(session.level, std::memory_order_relaxed);
    isTraceRecording.store(session.id != 0, std::memory_order_release);
    self.session = std::move(session);
}

void Pause()
{
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_nsec += kWritePause;
    if (end.tv_nsec >= 1'000'000'000)
    {
        ++end.tv_sec;
        end.tv_nsec -= 1'000'000'000;
    }
    FutexWait(&hurries, __atomic_load_n(&hurries, __ATOMIC_ACQUIRE), &end);
}

// Does one step of the thread: follows the session and writes, or waits for a session.
void Step(TraceWorker& self)
{
    const LONG counter = self.block.Counter();
    TraceSession now = self.session.id != 0 && self.block.IsForgotten() ? TraceSession() : self.block.Read();
    if (now != self.tried)
    {
        self.tried = now;
        Follow(self, std::move(now));
        self.changed(self.session);
    }
    if (self.session.id == 0)
        return self.block.WaitForChange(counter);
    WriteEvents();
    Pause();
}

void* RunWorker(void* argument)
{
    TraceWorker& self = *static_cast<TraceWorker*>(argument);
    while (!self.isStopping.load(std::memory_order_acquire))
        try
        {
            Step(self);
        }
        catch (const std::bad_alloc&)
        {
            Pause();
        }
    return nullptr;
}

void WriteAtExit()
{
    WriteEvents();
}

// In a forked child, the thread doesn't exist, and the events in the rings are the parent's. Tracing begins again with
// the next provider that the child registers.
void ForgetWorker()
{
    isTraceRecording = false;
    worker = nullptr; // and leaves its memory, because the parent's thread may have been changing it
    traceFile.Close();
    isWriting = false;
    ClearRings();
}

bool CreateThread(TraceWorker& self)
{
    static const bool isPrepared = pthread_atfork(nullptr, nullptr, &ForgetWorker) == 0 && atexit(&WriteAtExit) == 0;
    if (!isPrepared)
        return errno = ENOMEM, false;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    sigset_t all, before; // the host's signals aren't for this thread
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int code = pthread_create(&self.thread, &attributes, &RunWorker, &self);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_attr_destroy(&attributes);
    return errno = code, code == 0;
}

} // namespace

DWORD StartTraceWorker(SessionChanged changed, TraceSession& session)
{
    const std::lock_guard guard(workerLock);
    if (!worker)
    {
        auto made = std::make_unique<TraceWorker>();
        if (!made->block.Open())
            return ErrorFromErrno(errno);
        made->changed = changed;
        made->tried = made->block.Read();
        Follow(*made, made->tried);
        if (!CreateThread(*made))
        {
            const DWORD error = ErrorFromErrno(errno);
            Follow(*made, TraceSession());
            return error;
        }
        worker = made.release();
    }
    session = worker->block.Read();
    if (!isTraceRecording.load(std::memory_order_acquire))
        session = TraceSession();
    return ERROR_SUCCESS;
}

TraceWorker* DetachTraceWorker()
{
    const std::lock_guard guard(workerLock);
    return std::exchange(worker, nullptr);
}

void EndTraceWorker(TraceWorker* ending)
{
    if (!ending)
        return;
    const std::unique_ptr<TraceWorker> owned(ending);
    owned->isStopping.store(true, std::memory_order_release);
    owned->block.Nudge();
    HurryTraceWorker();
    pthread_join(owned->thread, nullptr);
    WriteEvents();
    const std::lock_guard guard(workerLock);
    if (!worker) // otherwise a provider was registered meanwhile
        Follow(*owned, TraceSession());
}

void HurryTraceWorker()
{
    __atomic_add_fetch(&hurries, 1, __ATOMIC_ACQ_REL);
    FutexWakeOne(&hurries);
}

} // namespace qxplatform
