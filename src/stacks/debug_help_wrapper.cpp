#include "stacks/debug_help_wrapper.h"

#include "core/debug_line.h"
#include "core/forever.h"
#include "core/ticks.h"
#include "stacks/window_update_lock.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qx
{
namespace
{

constexpr DWORD kPollInterval = 10;
constexpr DWORD kFailedStartPatience = 1'000;
constexpr unsigned kStackSize = 0x100000; // debug-help libraries need more than other threads

std::atomic<bool> threadsEnded = false;
std::atomic<bool> lockIsHeldByJob = false; // also true for jobs that work on their callers' threads

clsCriticalSection& SessionLock()
{
    static clsCriticalSection& lock = MakeForever<clsCriticalSection>();
    return lock;
}

// Converts the value of an option to the detail bits of records.
unsigned DetailOf(unsigned option)
{
    return option == 1 ? clsDBGHELP::kAllDetail : option;
}

// Walks a stack on a separate thread, while the service thread waits.
class clsDbgHelpGetStackTraceThread final : public clsThreadBase
{
public:
    clsDbgHelpGetStackTraceThread(clsDBGHELP& session, const CONTEXT& context, int maximum, unsigned detail)
        : clsThreadBase(L"DebugHelp::GetStackTrace"),
          _session(session),
          _context(context),
          _maximum(maximum),
          _detail(detail)
    {
    }
    ~clsDbgHelpGetStackTraceThread() override { ThreadEnd(false, INFINITE, true); }

    unsigned GetStackSize() const override { return kStackSize; }
    bool EndPumpsMessages() const override { return false; }

    unsigned ThreadProc() override
    {
        try
        {
            _frames = _session.Walk(_context, _maximum, _detail);
        }
        catch (const std::bad_alloc&)
        {
            DebugLine(L"ERR: out of memory in a stack walk");
        }
        return 0;
    }

    StackTraceListPtr Take()
    {
        ThreadEnd(false, INFINITE, true);
        return std::move(_frames);
    }

private:
    clsDBGHELP& _session;
    const CONTEXT& _context;
    const int _maximum;
    const unsigned _detail;
    StackTraceListPtr _frames;
};

} // namespace

DebugHelpTimes& TheDebugHelpTimes()
{
    static DebugHelpTimes times;
    return times;
}

void EndDebugHelpThreads()
{
    threadsEnded = true;
}

clsCriticalSection& DebugHelpThreadingLock()
{
    static clsCriticalSection& lock = MakeForever<clsCriticalSection>();
    return lock;
}

clsCriticalSection& GraphicsThreadingLock()
{
    static clsCriticalSection& lock = MakeForever<clsCriticalSection>();
    return lock;
}

void clsDBGHelpWrapper::Begin(unsigned mode)
{
    _mode = mode;
    if (threadsEnded || !ThreadStart(0))
    {
        if (!threadsEnded)
            DebugLine(L"problem running thread (usually the GPF happened in an allocator...)");
        _usesThread = false;
        ThreadEnd(true, kFailedStartPatience, true);
    }
    Run(Command::Open);
}

void clsDBGHelpWrapper::End()
{
    if (_isCutOff || std::exchange(_hasEnded, true))
        return;
    Run(Command::Close);
    if (_usesThread && !_isCutOff)
        ThreadEnd(false, INFINITE, true);
}

unsigned clsDBGHelpWrapper::ThreadProc()
{
    for (int result = 0; WaitForEvents(INFINITE, result, 1, _request.Get());)
    {
        if (result != 0)
            continue;
        _request.Reset();
        _result = Execute(_command);
        _done.Set();
    }
    return 0;
}

int clsDBGHelpWrapper::Run(Command command)
{
    if (_isCutOff)
        return _result;
    _command = command;
    if (!_usesThread)
        return _result = Execute(command);
    _request.Set();
    // The wait for the lock has its own limit, which is added to the limit of the command.
    const DWORD limit = TheDebugHelpTimes().command + (command == Command::Open ? TheDebugHelpTimes().lock : 0);
    if (WaitForSingleObject(_done.Get(), limit) == WAIT_TIMEOUT)
    {
        DebugLine(L"KILLing dump thread...");
        _isCutOff = true;
        ThreadEnd(false, 0, true);
    }
    _done.Reset();
    return _result;
}

int clsDBGHelpWrapper::Execute(Command command)
{
    try
    {
        if (command == Command::Open)
            return Open();
        if (command == Command::Close)
            return Close();
        if (!_session)
            return 0;
        switch (command)
        {
        case Command::GetStackTrace:
            return WalkStack();
        case Command::GetModuleList:
            _modules.reset(_session->Modules().Share());
            return 1;
        case Command::RunOperation:
            return _operation(*_session, _argument) ? 1 : 0;
        default:
            return 0;
        }
    }
    catch (const std::bad_alloc&)
    {
        DebugLine(L"ERR: out of memory in the debug-help service");
        return 0;
    }
}

// Polls with a time limit, because the thread that holds the lock may never release it.
bool clsDBGHelpWrapper::EnterThreadingLock()
{
    const unsigned long long start = UtilGetTicks();
    const DWORD limit = threadsEnded ? 0 : TheDebugHelpTimes().lock;
    for (;;)
    {
        if (DebugHelpThreadingLock().TryEnter())
        {
            bool isHeld = false;
            if (lockIsHeldByJob.compare_exchange_strong(isHeld, true))
                return true;
            DebugHelpThreadingLock().Leave();
        }
        const unsigned long long waited = UtilGetTicks() - start;
        if (waited >= limit)
            return false;
        Sleep(static_cast<DWORD>(std::min<unsigned long long>(kPollInterval, limit - waited)));
    }
}

int clsDBGHelpWrapper::Open()
{
    _holdsLock = EnterThreadingLock();
    if (!_holdsLock)
        return 0;
    if (threadsEnded ? !SessionLock().TryEnter() : (SessionLock().Enter(), false))
        return 0;
    try
    {
        _session = std::make_unique<clsDBGHELP>(_mode);
        if (_session->SetUp())
            return 1;
    }
    catch (const std::bad_alloc&)
    {
        DebugLine(L"ERR: out of memory while opening a debug-help session");
    }
    _session.reset();
    SessionLock().Leave();
    return 0;
}

int clsDBGHelpWrapper::Close()
{
    if (_session)
    {
        _session.reset();
        SessionLock().Leave();
    }
    if (_holdsLock)
    {
        _holdsLock = false;
        lockIsHeldByJob = false;
        DebugHelpThreadingLock().Leave();
    }
    return 1;
}

int clsDBGHelpWrapper::WalkStack()
{
    const WindowUpdateLock update(GetWindowToLock());
    const int maximum = GetMaxFrames();
    const unsigned detail = DetailOf(GetDetail());
    if (WalkOnOwnThread() && !threadsEnded)
    {
        auto owned = std::make_unique<clsDbgHelpGetStackTraceThread>(*_session, _context, maximum, detail);
        clsDbgHelpGetStackTraceThread& walker = *owned;
        _walker = std::move(owned);
        if (walker.ThreadStart(0))
        {
            _frames = walker.Take();
            _walker.reset();
            return _frames ? 1 : 0;
        }
        _walker.reset();
    }
    _frames = _session->Walk(_context, maximum, detail);
    return 1;
}

StackTraceListPtr clsDBGHelpWrapper::GetStackTrace(const CONTEXT& context)
{
    _context = context;
    const bool isDone = Run(Command::GetStackTrace) != 0;
    return isDone && !_isCutOff ? std::move(_frames) : nullptr;
}

ModuleListPtr clsDBGHelpWrapper::GetModuleList()
{
    const bool isDone = Run(Command::GetModuleList) != 0;
    return isDone && !_isCutOff ? std::move(_modules) : nullptr;
}

bool clsDBGHelpWrapper::RunInSession(Operation operation, void* argument)
{
    _operation = operation;
    _argument = argument;
    return Run(Command::RunOperation) != 0 && !_isCutOff;
}

} // namespace qx
