#include "process/process_object.h"

#include <processthreadsapi.h>
#include <winbase.h>

#include "base/fail.h"
#include "base/handle_table.h"
#include "base/pseudo_handles.h"
#include "threads/thread_object.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// Returns the exit code of a process that was ended by a signal: the code of the corresponding exception.
DWORD CodeOfSignal(int signal)
{
    struct Pair
    {
        int signal;
        DWORD code;
    };
    constexpr Pair kPairs[] = {
        {SIGSEGV, 0xC0000005}, // access violation
        {SIGBUS, 0xC0000006},  // in-page error
        {SIGILL, 0xC000001D},  // illegal instruction
        {SIGFPE, 0xC0000094},  // integer division by zero
        {SIGTRAP, 0x80000003}, // breakpoint
        {SIGINT, 0xC000013A},  // control C
        {SIGABRT, 3},
    };
    const Pair* const found = std::find_if(
        std::begin(kPairs), std::end(kPairs), [signal](const Pair& pair) { return pair.signal == signal; });
    return found == std::end(kPairs) ? 0xC0000001 : found->code; // STATUS_UNSUCCESSFUL
}

} // namespace

void ProcessObject::Watch(const Ref<ProcessObject>& child)
{
    std::thread([child] { child->WaitForEnd(); }).detach();
}

void ProcessObject::WaitForEnd()
{
    int status = 0;
    pid_t result;
    do
        result = waitpid(id, &status, 0);
    while (result < 0 && errno == EINTR);

    const std::lock_guard guard(DispatcherLock());
    if (result < 0)
        _exitCode = 0xFFFFFFFF; // the host process waits for children itself and has consumed the status
    else if (WIFEXITED(status))
        _exitCode = static_cast<DWORD>(WEXITSTATUS(status));
    else
        _exitCode = WTERMSIG(status) == SIGKILL ? _terminationCode : CodeOfSignal(WTERMSIG(status));
    _hasEnded = true;
    WakeWaiters();
}

DWORD ProcessObject::ExitCode() const
{
    const std::lock_guard guard(DispatcherLock());
    return _hasEnded ? _exitCode : STILL_ACTIVE;
}

BOOL ProcessObject::Terminate(DWORD exitCode)
{
    if (id == getpid())
        _exit(static_cast<int>(exitCode));
    const std::lock_guard guard(DispatcherLock());
    // After the process has ended, its id may belong to another process.
    if (_hasEnded)
        return Fail(ERROR_ACCESS_DENIED);
    _terminationCode = exitCode;
    return kill(id, SIGKILL) == 0 || FailErrno();
}

bool IsPseudoHandle(HANDLE handle)
{
    return handle == GetCurrentProcess() || handle == GetCurrentThread();
}

Ref<Object> PseudoHandleObject(HANDLE handle)
{
    if (handle == GetCurrentProcess())
        return MakeObject<ProcessObject>(getpid());
    if (handle == GetCurrentThread())
        return Ref<ThreadObject>(&ThreadObject::Current());
    return {};
}

bool IsCurrentProcess(HANDLE handle)
{
    if (handle == GetCurrentProcess())
        return true;
    const Ref<Object> object = ObjectOf(handle);
    return object && object->type == ObjectType::Process && static_cast<ProcessObject*>(object.get())->id == getpid();
}

namespace
{

Ref<ProcessObject> ProcessOf(HANDLE handle)
{
    return handle == GetCurrentProcess() ? MakeObject<ProcessObject>(getpid()) : LookUp<ProcessObject>(handle);
}

} // namespace

} // namespace qxplatform

using namespace qxplatform;

// Linux keeps only the low eight bits of an exit code.
void WINAPI ExitProcess(UINT uExitCode)
{
    std::exit(static_cast<int>(uExitCode));
}

BOOL WINAPI TerminateProcess(HANDLE hProcess, UINT uExitCode)
{
    const Ref<ProcessObject> process = ProcessOf(hProcess);
    return process && process->Terminate(uExitCode);
}

BOOL WINAPI GetExitCodeProcess(HANDLE hProcess, LPDWORD lpExitCode)
{
    const Ref<ProcessObject> process = ProcessOf(hProcess);
    if (!process)
        return FALSE;
    *lpExitCode = process->ExitCode();
    return TRUE;
}
