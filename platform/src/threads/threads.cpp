// The thread functions.
#include <errno.h>
#include <process.h>
#include <processthreadsapi.h>
#include <winbase.h>

#include "threads/thread_handles.h"
#include "time/file_time.h"

#include <cstdint>
#include <new>

using namespace qxplatform;

namespace
{

HANDLE Start(ThreadObject::Routine routine, void* argument, std::size_t stackSize, DWORD flags, DWORD* id)
{
    const Ref<ThreadObject> thread = ThreadObject::Start(routine, argument, stackSize, true);
    if (!thread)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const HANDLE handle = AddHandle(thread);
    if (handle == nullptr)
    {
        thread->Terminate(0); // it hasn't started
        return nullptr;
    }
    if (id != nullptr)
        *id = thread->id();
    if ((flags & CREATE_SUSPENDED) == 0)
        thread->Resume();
    return handle;
}

} // namespace

std::uintptr_t _beginthreadex(
    void*, unsigned stackSize, unsigned (*startAddress)(void*), void* argument, unsigned flags, unsigned* threadId)
{
    if (startAddress == nullptr)
    {
        errno = EINVAL;
        return 0;
    }
    const HANDLE thread = Start(startAddress, argument, stackSize, flags, threadId);
    if (thread == nullptr)
        errno = EAGAIN;
    return reinterpret_cast<std::uintptr_t>(thread);
}

HANDLE WINAPI OpenThread(DWORD dwDesiredAccess, BOOL, DWORD dwThreadId)
{
    if (dwThreadId == GetCurrentThreadId())
        ThreadObject::Current();
    const Ref<ThreadObject> thread = ThreadObject::Find(dwThreadId);
    if (thread)
        return AddHandle(thread, thread->MapAccess(dwDesiredAccess));
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

DWORD WINAPI SuspendThread(HANDLE hThread)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread, THREAD_SUSPEND_RESUME);
    return thread ? thread->Suspend() : Gate::kFailed;
}

DWORD WINAPI ResumeThread(HANDLE hThread)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread, THREAD_SUSPEND_RESUME);
    return thread ? thread->Resume() : Gate::kFailed;
}

BOOL WINAPI TerminateThread(HANDLE hThread, DWORD dwExitCode)
{
    if (hThread == GetCurrentThread())
        ThreadObject::Current().EndNow(dwExitCode);
    const Ref<ThreadObject> thread = ThreadOf(hThread, THREAD_TERMINATE);
    return thread && thread->Terminate(dwExitCode);
}

BOOL WINAPI GetExitCodeThread(HANDLE hThread, LPDWORD lpExitCode)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread);
    if (!thread)
        return FALSE;
    *lpExitCode = thread->ExitCode();
    return TRUE;
}

int WINAPI GetThreadPriority(HANDLE hThread)
try
{
    const Ref<ThreadObject> thread = ThreadOf(hThread);
    return thread ? thread->priority() : THREAD_PRIORITY_ERROR_RETURN;
}
catch (const std::bad_alloc&)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return THREAD_PRIORITY_ERROR_RETURN;
}

BOOL WINAPI SetThreadPriority(HANDLE hThread, int nPriority)
try
{
    const Ref<ThreadObject> thread = ThreadOf(hThread);
    return thread && thread->SetPriority(nPriority);
}
catch (const std::bad_alloc&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI GetThreadTimes(
    HANDLE hThread, LPFILETIME lpCreationTime, LPFILETIME lpExitTime, LPFILETIME lpKernelTime, LPFILETIME lpUserTime)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread);
    if (!thread)
        return FALSE;
    const ThreadObject::Times times = thread->GetTimes();
    *lpCreationTime = FileTimeOfUnits(times.created);
    *lpExitTime = FileTimeOfUnits(times.ended);
    *lpKernelTime = FileTimeOfUnits(times.processor.kernel);
    *lpUserTime = FileTimeOfUnits(times.processor.user);
    return TRUE;
}

DWORD WINAPI QueueUserAPC(PAPCFUNC pfnAPC, HANDLE hThread, ULONG_PTR dwData)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread, THREAD_SET_CONTEXT);
    return thread && thread->QueueApc({pfnAPC, dwData});
}
