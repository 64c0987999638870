// Jobs of the debug-help service: a thread that owns a session and runs commands with a time limit.
#pragma once

#include "containers/skip_list.h"
#include "stacks/debug_help_session.h"
#include "threads/event.h"
#include "threads/thread_base.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>

namespace qx
{

// Time limits, in milliseconds. Variables, so that tests needn't wait.
struct DebugHelpTimes
{
    DWORD lock = 5'000;     // for the threading lock, which only one job can hold
    DWORD command = 60'000; // for a command
};
DebugHelpTimes& TheDebugHelpTimes();

// Makes later jobs work on the calling thread and wait for no lock. Called when the library is unloaded.
void EndDebugHelpThreads();

// Return the threading lock, which each job holds, and a lock that callers may use for graphics. Both live as long as
// the library.
clsCriticalSection& DebugHelpThreadingLock();
clsCriticalSection& GraphicsThreadingLock();

// A job. The subclasses call Begin in their constructors and End in their destructors.
//
// Only the service thread enters and leaves the threading lock and the session lock. Therefore a second job waits even
// on the thread that opened the first one, and any thread may close a job.
class clsDBGHelpWrapper : public clsThreadBase
{
public:
    clsDBGHelpWrapper() : clsThreadBase(L"DebugHelp::clsDBGHelpWrapper") {}
    ~clsDBGHelpWrapper() override = default;

    // In vtable order after the slots of clsThreadBase.
    virtual bool WalkOnOwnThread() { return _usesThread; }
    virtual HWND GetWindowToLock() { return nullptr; }
    virtual int GetMaxFrames() { return 20; }
    virtual int Reserved10() { return 0; }
    virtual int Reserved11() { return 0; }
    virtual unsigned GetDetail() { return 1; }

    unsigned ThreadProc() override;

    // Closes the session and ends the thread. Destructors call it too, but the owner of a job must call it first and
    // check IsCutOff, because closing may run out of time like any command.
    void End();

    bool HasSession() const { return !_isCutOff && _session != nullptr; }
    // Returns true if a command ran out of time. Its thread may still use this object, which must not be destroyed
    // then.
    bool IsCutOff() const { return _isCutOff; }

    // Return a list, or null.
    StackTraceListPtr GetStackTrace(const CONTEXT& context);
    ModuleListPtr GetModuleList();

    // Calls an operation of the session on the service thread. Returns false without a session or if it failed.
    using Operation = bool (*)(clsDBGHELP& session, void* argument);
    bool RunInSession(Operation operation, void* argument);

protected:
    // `mode` is the mode of the session.
    void Begin(unsigned mode = clsDBGHELP::kSetsSymbolPath);

private:
    enum class Command
    {
        Open = 0,
        Close = 1,
        GetStackTrace = 2,
        GetModuleList = 3,
        WriteMiniDump = 4,
        RunOperation = 5,
    };

    int Run(Command command);
    int Execute(Command command);
    bool EnterThreadingLock();
    int Open();
    int Close();
    int WalkStack();

    clsEvent _request;
    clsEvent _done;
    unsigned _mode = 0;
    bool _usesThread = true;
    bool _holdsLock = false;
    bool _hasEnded = false;
    std::atomic<bool> _isCutOff = false;
    std::unique_ptr<clsDBGHELP> _session;
    Command _command = Command::Open;
    std::atomic<int> _result = 0;
    CONTEXT _context{};                     // a copy, because a thread that is cut off may still read it
    std::unique_ptr<clsThreadBase> _walker; // not on the stack of the service thread, which may be cut off
    StackTraceListPtr _frames;
    ModuleListPtr _modules;
    Operation _operation = nullptr;
    void* _argument = nullptr;
};

// The jobs of the exported functions.
class clsDBGHelpWrapperGPFProt final : public clsDBGHelpWrapper
{
public:
    static constexpr std::uint32_t kMaxFramesOption = 1;
    static constexpr std::uint32_t kOwnThreadOption = 2;
    static constexpr std::uint32_t kDetailOption = 3;

    explicit clsDBGHelpWrapperGPFProt(unsigned mode = clsDBGHELP::kSetsSymbolPath) { Begin(mode); }
    ~clsDBGHelpWrapperGPFProt() override { End(); }

    bool WalkOnOwnThread() override { return Option(kOwnThreadOption, 1) != 0; }
    int GetMaxFrames() override
    {
        constexpr std::uint32_t kMost = 0x7FFFFFFF;
        return static_cast<int>(std::min(Option(kMaxFramesOption, 100), kMost));
    }
    unsigned GetDetail() override { return Option(kDetailOption, 1); }

    void SetOption(std::uint32_t key, std::uint32_t value) { _options[key] = value; }

private:
    std::uint32_t Option(std::uint32_t key, std::uint32_t otherwise) const
    {
        const std::uint32_t* const value = _options.Find(key);
        return value ? *value : otherwise;
    }

    WCValSkipListDict<std::uint32_t, std::uint32_t> _options;
};

// Ends a job and destroys it, unless its thread may still use it.
struct CloseDebugHelpJob
{
    template <class Job>
    void operator()(Job* job) const
    {
        if (!job)
            return;
        job->End();
        if (!job->IsCutOff())
            delete job;
    }
};

} // namespace qx
