// The message queue functions. There are no windows yet, so all messages are thread messages.
#include <sysinfoapi.h>
#include <winbase.h>
#include <winuser.h>

#include "base/fail.h"
#include "threads/thread_object.h"
#include "threads/wait.h"

#include <new>

using namespace qxplatform;

namespace
{

// Signalled while its thread has new input of the kinds requested by a wait. Only that thread waits for it.
class Input : public Waitable
{
public:
    Input(ThreadObject& thread, DWORD kinds) : Waitable(ObjectType::Thread), _thread(thread), _kinds(kinds) {}

    bool IsSignalled() const override { return (_thread.queue()->New() & _kinds) != 0; }
    // Input that ended one wait doesn't end the next one; the caller is expected to check the queue in between.
    void Take() override { _thread.queue()->Look(_kinds); }

private:
    ThreadObject& _thread;
    const DWORD _kinds;
};

// Part of the stack of the thread that waits, so that the wait needs no memory. The reference keeps it from being
// deleted.
class InputOfWait : public Input
{
public:
    InputOfWait(ThreadObject& thread, DWORD kinds) : Input(thread, kinds) { AddRef(); }
    ~InputOfWait() override = default;
};

ThreadObject& ThreadWithQueue()
{
    ThreadObject& thread = ThreadObject::Current();
    const std::lock_guard guard(DispatcherLock());
    thread.OwnQueue();
    return thread;
}

bool IsNoWindow(HWND window)
{
    return window == nullptr || window == reinterpret_cast<HWND>(LONG_PTR{-1});
}

DWORD KindsOf(UINT flags)
{
    const DWORD asked = flags >> 16;
    return asked == 0 ? QS_ALLINPUT | QS_ALLPOSTMESSAGE : asked | (asked & QS_POSTMESSAGE ? QS_ALLPOSTMESSAGE : 0);
}

BOOL TakeMessage(LPMSG message, const MessageQueue::Filter& filter, UINT flags)
{
    ThreadObject& thread = ThreadWithQueue();
    const std::lock_guard guard(DispatcherLock());
    MessageQueue& queue = *thread.queue();
    queue.Look(KindsOf(flags));
    const std::optional<MSG> found = queue.Get(filter, (flags & PM_REMOVE) != 0);
    if (found)
        *message = *found;
    return found.has_value();
}

DWORD WaitForInput(DWORD count, const HANDLE* handles, DWORD milliseconds, DWORD kinds, DWORD flags)
{
    if (count >= MAXIMUM_WAIT_OBJECTS)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    WaitObjects objects;
    if (!AddWaitables(objects, count, handles))
        return WAIT_FAILED;
    const WaitOptions options{(flags & MWMO_WAITALL) != 0, milliseconds, (flags & MWMO_ALERTABLE) != 0};
    ThreadObject* thread = nullptr;
    try
    {
        thread = &ThreadWithQueue();
    }
    catch (const std::bad_alloc&)
    {
        return WaitFor(objects, options); // no other thread can send it messages
    }
    InputOfWait input(*thread, kinds);
    objects.Add(input);
    const DWORD result = WaitFor(objects, options);
    objects.RemoveLast();
    return result;
}

} // namespace

DWORD WINAPI MsgWaitForMultipleObjectsEx(
    DWORD nCount, const HANDLE* pHandles, DWORD dwMilliseconds, DWORD dwWakeMask, DWORD dwFlags)
{
    return FinishWait(WaitForInput(nCount, pHandles, dwMilliseconds, dwWakeMask, dwFlags));
}

DWORD WINAPI MsgWaitForMultipleObjects(
    DWORD nCount, const HANDLE* pHandles, BOOL fWaitAll, DWORD dwMilliseconds, DWORD dwWakeMask)
{
    return MsgWaitForMultipleObjectsEx(nCount, pHandles, dwMilliseconds, dwWakeMask, fWaitAll ? MWMO_WAITALL : 0);
}

BOOL WINAPI PeekMessageW(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg)
{
    if (!IsNoWindow(hWnd))
        return Fail(ERROR_INVALID_WINDOW_HANDLE);
    return TakeMessage(lpMsg, {hWnd, wMsgFilterMin, wMsgFilterMax}, wRemoveMsg);
}

BOOL WINAPI PostThreadMessageW(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam)
{
    const Ref<ThreadObject> thread = ThreadObject::Find(idThread);
    const std::lock_guard guard(DispatcherLock());
    if (!thread || thread->queue() == nullptr)
        return Fail(ERROR_INVALID_THREAD_ID);
    thread->queue()->Post({nullptr, Msg, wParam, lParam, GetTickCount(), {}});
    thread->Wake();
    return TRUE;
}

// There is no keyboard, and thus no key messages to translate.
BOOL WINAPI TranslateMessage(const MSG*)
{
    return FALSE;
}

LRESULT WINAPI DispatchMessageW(const MSG*)
{
    return 0;
}
