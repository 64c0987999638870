#include "threads/thread_object.h"

#include <winbase.h>

#include "base/fail.h"
#include "base/futex.h"
#include "threads/held_sections.h"
#include "threads/signal_stack.h"
#include "threads/stop_signal.h"
#include "time/file_time.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include <pthread.h>

namespace qxplatform
{
namespace
{

// The stop signal's handler reads it and must not make the loader allocate memory for thread-local objects.
[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadObject* current = nullptr;

// The destructor of this key's value runs after the thread's thread-local objects have been destroyed: the last moment
// at which the end of the thread can be detected.
pthread_key_t EndKey(void (*onThreadEnd)(void*))
{
    static const pthread_key_t key = [onThreadEnd]
    {
        pthread_key_t result = 0;
        pthread_key_create(&result, onThreadEnd);
        return result;
    }();
    return key;
}

LONGLONG Now()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return UnitsOf(FileTimeOf(now));
}

class Attributes
{
public:
    explicit Attributes(std::size_t stackSize)
    {
        pthread_attr_init(&attributes);
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
        pthread_attr_setstacksize(&attributes, stackSize);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() { pthread_attr_destroy(&attributes); }

    pthread_attr_t attributes;
};

// Returns the size of a stack, at least one megabyte. As on the system, a caller's size is the guaranteed size, not the
// limit. Pages that the thread doesn't touch use no memory.
std::size_t StackSizeFor(std::size_t wanted)
{
    constexpr std::size_t kLeast = 1 << 20;
    constexpr std::size_t kPage = 1 << 12;
    return std::max(kLeast, (wanted + kPage - 1) / kPage * kPage);
}

} // namespace

constinit ThreadObject* ThreadObject::_first = nullptr;

ThreadObject::ThreadObject(Routine routine, void* argument)
    : Waitable(kObjectType),
      _routine(routine),
      _argument(argument)
{
    _times.created = Now();
}

Ref<ThreadObject> ThreadObject::Start(Routine routine, void* argument, std::size_t stackSize, bool isSuspended)
{
    auto thread = MakeObject<ThreadObject>(routine, argument);
    thread->gate.Enter();
    if (isSuspended)
        thread->gate.Suspend();
    thread->AddRef(); // the thread's own reference
    Attributes attributes(StackSizeFor(stackSize));
    pthread_t handle;
    const int code = pthread_create(&handle, &attributes.attributes, &Entry, thread.get());
    if (code != 0)
    {
        thread->Release();
        errno = code;
        return {};
    }
    while (std::atomic_ref(thread->_isRegistered).load() == FALSE)
        FutexWait(&thread->_isRegistered, FALSE);
    return thread;
}

void* ThreadObject::Entry(void* object)
{
    auto* const thread = static_cast<ThreadObject*>(object);
    pthread_setspecific(EndKey(&OnThreadEnd), thread);
    AdmitStopSignal();
    ProvideSignalStack();
    current = thread;
    thread->Register();
    thread->Run();
    return nullptr;
}

// EndNow() jumps back here from any point of the thread. The functions in between are not unwound, because the thread
// must end without running destructors.
void ThreadObject::Run()
{
    if (sigsetjmp(_start, 1) == 0)
    {
        LeaveGate();
        _exitCode = _routine(_argument);
    }
    gate.Enter();
    // If the thread is suspended at this moment, it doesn't end before it is resumed.
    gate.Leave();
    gate.Enter();
    current = nullptr;
}

void ThreadObject::Register()
{
    const std::lock_guard guard(DispatcherLock());
    _id = GetCurrentThreadId();
    Link();
    std::atomic_ref(_isRegistered).store(TRUE);
    FutexWakeOne(&_isRegistered);
}

// Marks the parent's threads as ended, because a wait for one of them would never end.
void ThreadObject::AfterForkInChild()
{
    constexpr DWORD kGone = 1;
    const std::lock_guard guard(DispatcherLock());
    for (ThreadObject* thread = std::exchange(_first, nullptr); thread != nullptr; thread = thread->_next)
        if (thread != current)
        {
            if (!thread->_terminationCode)
                thread->_terminationCode = kGone;
            thread->_waiter = nullptr;
            thread->_hasEnded = true;
            thread->AbandonOwned();
        }
    if (current == nullptr)
        return;
    current->_id = GetCurrentThreadId();
    current->Link();
}

void ThreadObject::Link()
{
    _next = _first;
    _link = &_first;
    if (_first != nullptr)
        _first->_link = &_next;
    _first = this;
}

void ThreadObject::Unlink()
{
    *_link = _next;
    if (_next != nullptr)
        _next->_link = _link;
}

namespace
{

[[gnu::constructor]] void PrepareThreadsForForks()
{
    pthread_atfork(nullptr, nullptr, &ThreadObject::AfterForkInChild);
}

} // namespace

ThreadObject* ThreadObject::CurrentIfKnown()
{
    return current;
}

ThreadObject& ThreadObject::Current()
{
    if (current != nullptr)
        return *current;
    const pthread_key_t key = EndKey(&OnThreadEnd);
    if (void* const object = pthread_getspecific(key))
        return *static_cast<ThreadObject*>(object);
    const auto thread = MakeObject<ThreadObject>(nullptr, nullptr);
    thread->AddRef(); // the thread's own reference
    pthread_setspecific(key, thread.get());
    thread->Register();
    current = thread.get();
    AdmitStopSignal();
    return *thread;
}

Ref<ThreadObject> ThreadObject::Find(DWORD id)
{
    const std::lock_guard guard(DispatcherLock());
    ThreadObject* thread = _first;
    while (thread != nullptr && thread->_id != id)
        thread = thread->_next;
    return Ref<ThreadObject>(thread);
}

void ThreadObject::OnThreadEnd(void* object)
{
    auto* const thread = static_cast<ThreadObject*>(object);
    current = nullptr;
    thread->gate.Enter();
    {
        const std::lock_guard guard(DispatcherLock());
        thread->_times.ended = Now();
        thread->_times.processor = ProcessorTimesOfThisThread();
        thread->Unlink();
        thread->_queue.reset();
        thread->_apcs.clear();
        thread->_hasEnded = true;
        thread->AbandonOwned();
        thread->WakeWaiters();
    }
    thread->Release();
}

void OwnedByThread::EnterList(OwnedByThread*& first)
{
    _nextOwned = first;
    _ownedLink = &first;
    if (first != nullptr)
        first->_ownedLink = &_nextOwned;
    first = this;
}

void OwnedByThread::LeaveList()
{
    *_ownedLink = _nextOwned;
    if (_nextOwned != nullptr)
        _nextOwned->_ownedLink = _ownedLink;
    _nextOwned = nullptr;
    _ownedLink = nullptr;
}

void ThreadObject::AbandonOwned()
{
    while (OwnedByThread* const owned = _firstOwned)
    {
        owned->LeaveList();
        owned->Abandon();
    }
}

bool ThreadObject::HasEnded() const
{
    const std::lock_guard guard(DispatcherLock());
    return _hasEnded;
}

// Returns the exit code, which a terminated thread has even if it has not yet ended.
DWORD ThreadObject::ExitCode() const
{
    const std::lock_guard guard(DispatcherLock());
    if (_terminationCode)
        return *_terminationCode;
    return _hasEnded ? _exitCode : STILL_ACTIVE;
}

ThreadObject::Times ThreadObject::GetTimes() const
{
    const ProcessorTimes processor = ProcessorTimesOf(_id);
    const std::lock_guard guard(DispatcherLock());
    Times times = _times;
    if (!_hasEnded)
        times.processor = processor;
    return times;
}

DWORD ThreadObject::Suspend()
{
    if (HasEnded())
    {
        Fail(ERROR_ACCESS_DENIED);
        return Gate::kFailed;
    }
    const DWORD former = gate.Suspend();
    if (former == Gate::kFailed)
        Fail(ERROR_SIGNAL_REFUSED);
    else if (current == this)
    {
        gate.Enter();
        LeaveGate();
    }
    else
        DriveToGate(*this);
    return former;
}

DWORD ThreadObject::Resume()
{
    return gate.Resume();
}

BOOL ThreadObject::Terminate(DWORD exitCode)
{
    if (current == this)
        EndNow(exitCode);
    if (_routine == nullptr) // the layer has no point to return to
        return Fail(ERROR_NOT_SUPPORTED);
    {
        const std::lock_guard guard(DispatcherLock());
        if (_hasEnded || _terminationCode)
            return Fail(ERROR_ACCESS_DENIED);
        _terminationCode = exitCode;
        gate.OrderEnd();
        Wake();
    }
    DriveToGate(*this);
    return TRUE;
}

void ThreadObject::EndNow(DWORD exitCode)
{
    _exitCode = exitCode;
    if (_routine == nullptr)
        pthread_exit(nullptr);
    siglongjmp(_start, 1);
}

void ThreadObject::LeaveGate()
{
    if (!gate.Leave() && !HoldsCriticalSections())
        EndNow(0); // ignored, because a terminated thread already has its exit code
}

void ThreadObject::Wake()
{
    if (_waiter != nullptr)
        WakeWaiter(*_waiter);
}

BOOL ThreadObject::QueueApc(const Apc& apc)
{
    const std::lock_guard guard(DispatcherLock());
    if (_hasEnded)
        return Fail(ERROR_GEN_FAILURE);
    _apcs.push_back(apc);
    Wake();
    return TRUE;
}

void ThreadObject::RunApcs()
{
    for (;;)
    {
        std::unique_lock guard(DispatcherLock());
        if (_apcs.empty())
            return;
        const Apc apc = _apcs.front();
        _apcs.pop_front();
        guard.unlock();
        apc.function(apc.argument);
    }
}

MessageQueue& ThreadObject::OwnQueue()
{
    if (!_queue)
        _queue.emplace();
    return *_queue;
}

} // namespace qxplatform
