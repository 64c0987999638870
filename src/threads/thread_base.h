// The base class of all threads of the library.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "diag/marker_series.h"
#include "threads/event.h"

#include <atomic>
#include <memory>

namespace qx
{

// A thread that can be started, asked to stop, waited for, and started again. A subclass implements ThreadProc(), which
// checks the stop event through WaitForEvents(). Its destructor must call ThreadEnd() before the members used by the
// thread are destroyed.
class clsThreadBase : public clsConcurrencyVisualizerUser
{
public:
    enum class State
    {
        None = 0,
        Running = 1,
        Exited = 3,
    };

    // Results of WaitForEvents() in addition to handle indexes.
    static constexpr int kTimedOut = -1;
    static constexpr int kWaitFailed = -2;
    static constexpr int kCompletionRoutineRan = -3;
    static constexpr int kMessageArrived = -4;
    static constexpr int kStopRequested = static_cast<int>(0x80000000);

    // The thread's full name is the name of the module, "::" and `name`. If `name` is null or empty, the thread has no
    // name.
    explicit clsThreadBase(const wchar_t* name);
    clsThreadBase(const clsThreadBase&) = delete;
    clsThreadBase& operator=(const clsThreadBase&) = delete;

    // The vtable order is part of the interface.

    // The body of the thread. Returns the exit code.
    virtual unsigned ThreadProc() { return 0; }
    virtual unsigned GetStackSize() const { return 0x4000; }
    // If true, WaitForEvents() also returns when window messages arrive.
    virtual bool WaitsPumpMessages() const { return false; }
    // If true, ThreadEnd() dispatches the caller's window messages while it waits.
    virtual bool EndPumpsMessages() const { return true; }
    virtual bool WaitsAlertable() const { return false; }
    virtual ~clsThreadBase();

    // Starts the thread and returns true once it runs. If it is already running, resumes it.
    bool ThreadStart(int priority);

    // Asks the thread to stop and waits for it. Returns 1 if the thread has ended, if there was none, or if it is left
    // running because `mayTerminate` is false. Returns 0 if it was terminated. When called by the thread itself, only
    // sets the stop event. On linux, the platform layer terminates a thread only when it returns from a foreign library
    // or leaves its last critical section. That may happen after ThreadEnd has returned, so a body that may block there
    // must not use anything that is destroyed with the object.
    int ThreadEnd(bool stopsSuspended, DWORD milliseconds, bool mayTerminate);

    // Returns false if the thread must stop. `count` is the number of handles that follow.
    bool WaitForEvents(DWORD milliseconds, int& result, int count, ...);

    State GetThreadState();
    // Returns the message of the last failure of ThreadStart().
    String& GetLastErrorString();

    const char* Name() const { return _name.get(); }
    unsigned ThreadId() const { return _threadId; }
    unsigned StarterId() const { return _starterId; }
    // Returns the exit code. It is set when the handle is closed, and is (unsigned)-1 from the start until then.
    unsigned ExitCode() const { return _exitCode; }

protected:
    // Returns the lane of the thread on the timeline, or null if no timeline is recorded. For use by the thread only.
    clsConcurrencyVisualizerMarkerSeries* Markers() const { return _markers.get(); }

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

    clsCriticalSection _lock{100}; // protects the handle, starts and ends
    HANDLE _hThread = nullptr;
    std::atomic<unsigned> _threadId = 0;
    std::atomic<unsigned> _starterId = 0;
    clsEvent _stopEvent;
    std::unique_ptr<char, LocalRelease> _name;
    std::atomic<unsigned> _exitCode = 0;
    std::unique_ptr<clsConcurrencyVisualizerMarkerSeries> _markers;
    std::unique_ptr<String> _lastError;
    std::atomic<int> _endGuard = 0;
    bool _isStarted = false;
    unsigned _starts = 0; // distinguishes a thread from the next one
};

} // namespace qx
