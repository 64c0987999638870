// The one thread object of the library.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "threads/event.h"
#include "threads/thread_marks.h"

#include <atomic>
#include <memory>

namespace qx
{

// A thread that can be started, asked to stop, waited for, and started again. A subclass supplies the body, which
// watches the stop event by WaitForEvents(), and calls ThreadEnd() in its own destructor, before its members are gone.
class clsThreadBase
{
public:
    enum class State
    {
        None = 0,
        Running = 1,
        Exited = 3,
    };

    // Results of WaitForEvents() beside the index of a handle.
    static constexpr int kTimedOut = -1;
    static constexpr int kWaitFailed = -2;
    static constexpr int kCompletionRoutineRan = -3;
    static constexpr int kMessageArrived = -4;
    static constexpr int kStopRequested = static_cast<int>(0x80000000);

    // The thread's name is that of the module, "::", and this one; without one, the thread has none.
    explicit clsThreadBase(const wchar_t* name);
    clsThreadBase(const clsThreadBase&) = delete;
    clsThreadBase& operator=(const clsThreadBase&) = delete;

    // The order of the virtual operations is part of the interface.

    // The body; its result is the exit code.
    virtual unsigned ThreadProc() { return 0; }
    virtual unsigned GetStackSize() const { return 0x4000; }
    // Whether WaitForEvents() wakes for window messages too.
    virtual bool WaitsPumpMessages() const { return false; }
    // Whether ThreadEnd() keeps the caller's message queue running while it waits.
    virtual bool EndPumpsMessages() const { return true; }
    virtual bool WaitsAlertable() const { return false; }
    virtual ~clsThreadBase();

    // True when the thread runs; it has said so itself. A thread that runs already is resumed.
    bool ThreadStart(int priority);

    // Asks the thread to stop and waits. 1 when it ended by itself, when there was none to end, or when it is left
    // alone for now; 0 when it was terminated. Called by the thread itself it only sets the stop event. The platform
    // layer ends a thread where it comes back from a foreign library, or leaves its last critical section: that may be
    // after this has returned, so a body that may block there uses nothing that goes with the object.
    int ThreadEnd(bool stopsSuspended, DWORD milliseconds, bool mayTerminate);

    // False when the thread is to stop. The handles follow their count.
    bool WaitForEvents(DWORD milliseconds, int& result, int count, ...);

    State GetThreadState();
    // The text of the last failure of ThreadStart().
    String& GetLastErrorString();

    const char* Name() const { return _name.get(); }
    unsigned ThreadId() const { return _threadId; }
    unsigned StarterId() const { return _starterId; }
    // Filled when the handle is closed; -1 from the start on.
    unsigned ExitCode() const { return _exitCode; }

protected:
    // For the body alone; null while nobody draws.
    ThreadMarks* Marks() const { return _marks.get(); }

private:
    struct StartOrder;
    struct LocalRelease
    {
        void operator()(char* text) const { LocalFree(text); }
    };

    static unsigned __stdcall Entry(void* order);
    unsigned Run(std::shared_ptr<StartOrder> order);

    bool Create(const std::shared_ptr<StartOrder>& order);
    bool WaitForStart(StartOrder& order);
    bool FailStart(const String& text);

    int EndRunning(bool stopsSuspended, DWORD milliseconds, bool mayTerminate, bool& keepsHandle);
    bool WaitForThread(HANDLE thread, DWORD milliseconds);
    bool WaitForThreadAndMessages(HANDLE thread, DWORD milliseconds);
    void Terminate(HANDLE thread, unsigned threadId);
    void ReportTimes();
    void CleanUpHandle();

    DWORD Wait(DWORD count, const HANDLE* handles, DWORD milliseconds) const;

    clsCriticalSection _lock{100}; // the handle, starts and ends
    HANDLE _hThread = nullptr;
    std::atomic<unsigned> _threadId = 0;
    std::atomic<unsigned> _starterId = 0;
    clsEvent _stopEvent;
    std::unique_ptr<char, LocalRelease> _name;
    std::atomic<unsigned> _exitCode = 0;
    std::unique_ptr<ThreadMarks> _marks;
    std::unique_ptr<String> _lastError;
    std::atomic<int> _endGuard = 0;
    bool _isStarted = false;
    unsigned _starts = 0; // tells a thread from the one that was started after it
};

} // namespace qx
