#include "threads/thread_base.h"

#include "core/counted_entry.h"
#include "core/debug_line.h"
#include "core/developer_run.h"
#include "core/thread_names.h"
#include "core/ticks.h"
#include "files/file_time.h"
#include "module/module_paths.h"
#include "threads/debugger_name.h"

#include <process.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace qx
{
namespace
{

constexpr DWORD kStartPatience = 20'000;
constexpr unsigned kMessageImportance = 4;
constexpr DWORD kSuspendFailed = 0xFFFFFFFF;

String LastErrorText()
{
    return String::SystemErrorText(GetLastError());
}

// Releases a lock for the duration of a wait.
class LockReleased
{
public:
    explicit LockReleased(clsCriticalSection& lock) : _lock(lock) { _lock.Leave(); }
    LockReleased(const LockReleased&) = delete;
    LockReleased& operator=(const LockReleased&) = delete;
    ~LockReleased() { _lock.Enter(); }

private:
    clsCriticalSection& _lock;
};

void PumpMessages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// A deadline. INFINITE means that it never passes.
class Deadline
{
public:
    explicit Deadline(DWORD milliseconds) : _isNever(milliseconds == INFINITE), _end(UtilGetTicks() + milliseconds) {}

    bool HasPassed() const { return !_isNever && UtilGetTicks() >= _end; }

private:
    bool _isNever;
    unsigned long long _end;
};

// Returns null without memory.
std::unique_ptr<clsConcurrencyVisualizerMarkerSeries> MakeMarkers(const char* name) noexcept
try
{
    if (!name)
        return clsConcurrencyVisualizerMarkerSeries::Make(L"(thread)", true);
    String wideName;
    wideName.Assign(name);
    return clsConcurrencyVisualizerMarkerSeries::Make(wideName.Text(), false);
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

long long Milliseconds(const FILETIME& time)
{
    return static_cast<long long>(UnitsOf(time) / kUnitsPerMillisecond);
}

} // namespace

// Shared by the starter and the new thread, and outlives both. If the thread begins only after the starter has given
// up, it finds the order withdrawn and doesn't touch the object, which may already be destroyed.
struct clsThreadBase::StartOrder
{
    enum class Stage
    {
        Open,
        Taken,
        Withdrawn,
    };

    // Returns false if the other thread has already changed the stage.
    bool MoveTo(Stage next)
    {
        Stage expected = Stage::Open;
        return stage.compare_exchange_strong(expected, next);
    }

    explicit StartOrder(clsThreadBase& object) : thread(object) {}

    clsThreadBase& thread;
    clsEvent startSignal;
    std::atomic<Stage> stage = Stage::Open;
};

clsThreadBase::clsThreadBase(const wchar_t* name)
{
    if (!name || !*name)
        return;
    const String full(String::kFormatted, L"%s::%s", LibraryPaths().baseName.Text(), name);
    const std::string_view narrow = full.NarrowText();
    _name.reset(static_cast<char*>(LocalAlloc(LMEM_FIXED, narrow.size() + 1)));
    if (_name)
        std::memcpy(_name.get(), narrow.data(), narrow.size() + 1);
}

clsThreadBase::~clsThreadBase()
{
    if (GetThreadState() == State::Running)
    {
        DebugLine(L"clsThreadBase(%hs)::~clsThreadBase: warning: derived class does not end thread. I do it here - "
                  L"cross your fingers that the derived class does not access any members in the thread function!!!",
            Name());
        ThreadEnd(false, 1000, true);
    }
    if (_hThread)
        CleanUpHandle();
}

// Holds the lock throughout, so that two callers can't both start a thread.
bool clsThreadBase::ThreadStart(int priority)
{
    const clsCriticalSectionLock lock(_lock);
    // A thread whose order was withdrawn because it didn't start in time doesn't count as a thread.
    if (GetThreadState() == State::Exited || (_hThread && !_isStarted))
        CleanUpHandle();
    if (_hThread)
    {
        ResumeThread(_hThread);
        return true;
    }
    const auto order = std::make_shared<StartOrder>(*this);
    _exitCode = static_cast<unsigned>(-1);
    _starterId = GetCurrentThreadId();
    _stopEvent.Reset();
    _markers.reset();
    if (!Create(order) || !WaitForStart(*order))
        return false;
    _isStarted = true;
    SetThreadPriority(_hThread, priority);
    return true;
}

bool clsThreadBase::Create(const std::shared_ptr<StartOrder>& order)
{
    auto argument = std::make_unique<std::shared_ptr<StartOrder>>(order);
    const unsigned stackSize = GetStackSize();
    unsigned id = 0;
    errno = 0;
    const std::uintptr_t handle = _beginthreadex(nullptr, stackSize, &Entry, argument.get(), CREATE_SUSPENDED, &id);
    if (handle == 0)
    {
        const int code = errno;
        const String reason = LastErrorText();
        return FailStart(String(String::kFormatted,
            L"clsThreadBase(%hs)::ThreadStart: Cannot create thread (stack size %d KiB): errno=%d, GetLastError()=%s",
            Name(), static_cast<int>(stackSize / 1024), code, reason.Text()));
    }
    argument.release(); // now owned by the thread
    _hThread = reinterpret_cast<HANDLE>(handle);
    _threadId = id;
    ++_starts;
    return true;
}

bool clsThreadBase::WaitForStart(StartOrder& order)
{
    ResumeThread(_hThread);
    const DWORD result = WaitForSingleObject(order.startSignal.Get(), kStartPatience);
    if (result == WAIT_OBJECT_0)
        return true;
    const String reason = LastErrorText();
    if (!order.MoveTo(StartOrder::Stage::Withdrawn))
    {
        // The thread has started at this very moment.
        WaitForSingleObject(order.startSignal.Get(), INFINITE);
        return true;
    }
    _isStarted = false;
    return FailStart(String(String::kFormatted,
        L"clsThreadBase(%hs)::ThreadStart: WaitForSingleObject() failed: result=%08x, GetLastError()=%s", Name(),
        result, reason.Text()));
}

bool clsThreadBase::FailStart(const String& text)
{
    GetLastErrorString() = text;
    DebugLine(L"ERR: %s", text.Text());
    return false;
}

unsigned __stdcall clsThreadBase::Entry(void* order)
{
    const std::unique_ptr<std::shared_ptr<StartOrder>> argument(static_cast<std::shared_ptr<StartOrder>*>(order));
    if (!(*argument)->MoveTo(StartOrder::Stage::Taken))
        return 0;
    clsThreadBase& thread = (*argument)->thread;
    return thread.Run(std::move(*argument));
}

// Releases the order as soon as the starter is notified, so that a running thread owns no event. A thread that is
// terminated would leak it.
unsigned clsThreadBase::Run(std::shared_ptr<StartOrder> order)
{
    // Removes the name in a destructor, because the body may end the thread, which unwinds the stack.
    class EnteredName
    {
    public:
        explicit EnteredName(const char* name) : _name(name ? std::strstr(name, "::") + 2 : nullptr)
        {
            if (!_name)
                return;
            try
            {
                NameThreadForDebugger(name);
                TheThreadNames().Enter(_id, _name);
            }
            catch (const std::bad_alloc&)
            {
                _name = nullptr; // the thread's debug lines lack the name then
            }
        }
        EnteredName(const EnteredName&) = delete;
        EnteredName& operator=(const EnteredName&) = delete;
        ~EnteredName()
        {
            if (_name)
                TheThreadNames().Remove(_id, _name);
        }

    private:
        const unsigned _id = GetCurrentThreadId();
        const char* _name;
    };
    const char* const name = Name();
    const EnteredName enteredName(name);
    order->startSignal.Set();
    order.reset();

    if (AreMarkersActive())
        _markers = MakeMarkers(name);
    if (_markers)
        _markers->WriteMessage(kMessageImportance, L"starting");
    const unsigned result = ThreadProc();
    if (_markers)
        _markers->WriteMessage(kMessageImportance, L"ending, result=%u", result);
    return result;
}

int clsThreadBase::ThreadEnd(bool stopsSuspended, DWORD milliseconds, bool mayTerminate)
{
    const clsCriticalSectionLock lock(_lock);
    const CountedEntry entry(_endGuard);
    if (!entry.IsFirst())
    {
        if (UtilIsDeveloperRun())
            DebugLine(L"ups ;) some recursion in ThreadEnd()? Might be OK though ;)");
        return 1;
    }
    if (!_hThread)
        return 1;
    _stopEvent.Set();
    if (GetCurrentThreadId() == _threadId)
        return 1;

    const unsigned start = _starts;
    bool keepsHandle = false;
    const int result = EndRunning(stopsSuspended, milliseconds, mayTerminate, keepsHandle);
    // While the lock was released for the wait, another thread may have been started.
    if (start != _starts || !_hThread)
        return result;
    if (UtilIsDeveloperRun())
        ReportTimes();
    if (!keepsHandle)
        CleanUpHandle();
    return result;
}

int clsThreadBase::EndRunning(bool stopsSuspended, DWORD milliseconds, bool mayTerminate, bool& keepsHandle)
{
    DWORD code = STILL_ACTIVE;
    const BOOL isKnown = _isStarted ? GetExitCodeThread(_hThread, &code) : FALSE;
    if (!isKnown)
    {
        const String reason = LastErrorText();
        DebugLine(L"clsThreadBase(%hs)::ThreadEnd(): warning: thread handle is not NULL, but "
                  L"::GetExitCodeThread(_hThread,&dwEC) failed(%d): %s",
            Name(), isKnown, reason.Text());
        return 1;
    }
    if (code != STILL_ACTIVE)
        return 1;

    // Use a duplicate, because another caller may find this thread exited and close its handle.
    clsGenericHandleObjectAutoRelease handle;
    if (!handle.Duplicate(_hThread))
        handle.Take(_hThread, false);
    const HANDLE thread = handle.Get();
    const unsigned threadId = _threadId;
    const DWORD suspended = SuspendThread(thread);
    // Fails if the thread has ended in the meantime; the wait below detects that immediately.
    const DWORD count = suspended == kSuspendFailed ? 0 : suspended;
    if (suspended != kSuspendFailed)
        ResumeThread(thread);

    bool hasEnded = false;
    const unsigned start = _starts;
    if (count == 0 || !stopsSuspended)
    {
        SetThreadPriority(thread, GetThreadPriority(GetCurrentThread()));
        if (count != 0)
            ResumeThread(thread);
        const LockReleased released(_lock);
        hasEnded =
            EndPumpsMessages() ? WaitForThreadAndMessages(thread, milliseconds) : WaitForThread(thread, milliseconds);
    }
    // Another thread can have been started only if this one had ended.
    if (hasEnded || start != _starts)
        return 1;
    if (!mayTerminate)
    {
        keepsHandle = true;
        return 1;
    }
    Terminate(thread, threadId);
    return 0;
}

bool clsThreadBase::WaitForThread(HANDLE thread, DWORD milliseconds)
{
    return WaitForSingleObject(thread, milliseconds) != WAIT_TIMEOUT;
}

// Returns false if the thread hasn't ended by the deadline.
bool clsThreadBase::WaitForThreadAndMessages(HANDLE thread, DWORD milliseconds)
{
    const Deadline deadline(milliseconds);
    do
    {
        switch (MsgWaitForMultipleObjects(1, &thread, FALSE, milliseconds, QS_ALLINPUT))
        {
        case WAIT_OBJECT_0:
            return true;
        case WAIT_OBJECT_0 + 1:
            PumpMessages();
            break;
        case WAIT_ABANDONED_0:
            DebugLine(L"abandoned...");
            break;
        case WAIT_FAILED:
        {
            const String reason = LastErrorText();
            DebugLine(L"clsThreadBase::ThreadEnd(): MsgWaitForMultipleObjects returned WAIT_FAILED: %s", reason.Text());
            return true;
        }
        }
    } while (!deadline.HasPassed());
    return false;
}

// Also does the clean-up that the thread would have done itself at its end.
void clsThreadBase::Terminate(HANDLE thread, unsigned threadId)
{
    TerminateThread(thread, 0);
    if (Name())
        TheThreadNames().Remove(threadId, std::strstr(Name(), "::") + 2);
}

void clsThreadBase::ReportTimes()
{
    DWORD code = STILL_ACTIVE;
    FILETIME created, ended, kernel, user;
    if (!_isStarted || !GetExitCodeThread(_hThread, &code) || code == STILL_ACTIVE ||
        !GetThreadTimes(_hThread, &created, &ended, &kernel, &user))
        return;
    if (ended.dwLowDateTime != 0 || ended.dwHighDateTime != 0)
        DebugLine(L"thread '%hs' was alive for %d ms (UserMode: %d ms, KernelMode: %d ms)", Name(),
            static_cast<int>(Milliseconds(ended) - Milliseconds(created)), static_cast<int>(Milliseconds(user)),
            static_cast<int>(Milliseconds(kernel)));
    else
        DebugLine(L"thread '%hs' forced to exit! (UserMode: %d ms, KernelMode: %d ms)", Name(),
            static_cast<int>(Milliseconds(user)), static_cast<int>(Milliseconds(kernel)));
}

void clsThreadBase::CleanUpHandle()
{
    DWORD code = 0;
    if (GetExitCodeThread(_hThread, &code))
        _exitCode = code;
    CloseHandle(_hThread);
    _hThread = nullptr;
    _threadId = 0;
}

clsThreadBase::State clsThreadBase::GetThreadState()
{
    const clsCriticalSectionLock lock(_lock);
    if (!_hThread)
        return State::None;
    return WaitForSingleObject(_hThread, 0) == WAIT_OBJECT_0 ? State::Exited : State::Running;
}

String& clsThreadBase::GetLastErrorString()
{
    const clsCriticalSectionLock lock(_lock);
    if (!_lastError)
        _lastError = std::make_unique<String>();
    return *_lastError;
}

DWORD clsThreadBase::Wait(DWORD count, const HANDLE* handles, DWORD milliseconds) const
{
    const bool isAlertable = WaitsAlertable();
    if (WaitsPumpMessages())
        return isAlertable ? MsgWaitForMultipleObjectsEx(count, handles, milliseconds, QS_ALLINPUT, MWMO_ALERTABLE)
                           : MsgWaitForMultipleObjects(count, handles, FALSE, milliseconds, QS_ALLINPUT);
    return isAlertable ? WaitForMultipleObjectsEx(count, handles, FALSE, milliseconds, TRUE)
                       : WaitForMultipleObjects(count, handles, FALSE, milliseconds);
}

bool clsThreadBase::WaitForEvents(DWORD milliseconds, int& result, int count, ...)
{
    // Has room for one handle more than the system accepts, so that the system rejects too many handles.
    HANDLE handles[MAXIMUM_WAIT_OBJECTS + 1] = {_stopEvent.Get()};
    const int given = std::clamp(count, 0, static_cast<int>(MAXIMUM_WAIT_OBJECTS));
    va_list arguments;
    va_start(arguments, count);
    for (int index = 0; index < given; ++index)
        handles[index + 1] = va_arg(arguments, HANDLE);
    va_end(arguments);

    const DWORD all = static_cast<DWORD>(given) + 1;
    const Deadline deadline(milliseconds);
    result = kTimedOut;
    do
    {
        DWORD outcome = Wait(all, handles, milliseconds);
        // An abandoned mutex belongs to the thread that waited for it, like any other.
        if (outcome >= WAIT_ABANDONED_0 && outcome < WAIT_ABANDONED_0 + all)
            outcome -= WAIT_ABANDONED_0 - WAIT_OBJECT_0;
        if (outcome == WAIT_OBJECT_0)
            return result = kStopRequested, false;
        if (outcome < all)
            return result = static_cast<int>(outcome) - 1, true;
        if (outcome == all)
            return result = kMessageArrived, true;
        if (outcome == WAIT_FAILED)
            return result = kWaitFailed, true;
        if (outcome == WAIT_IO_COMPLETION && WaitsAlertable())
            return result = kCompletionRoutineRan, true;
    } while (!deadline.HasPassed());
    return true;
}

} // namespace qx
