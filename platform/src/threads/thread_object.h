// A thread of this process: one that the layer started, or another one that was asked for.
#pragma once

#include <processthreadsapi.h>

#include "threads/gate.h"
#include "threads/message_queue.h"
#include "threads/processor_times.h"
#include "threads/waitable.h"

#include <csetjmp>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

namespace qxplatform
{

class ThreadObject : public Waitable
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Thread;

    using Routine = unsigned (*)(void*);

    struct Apc
    {
        PAPCFUNC function;
        ULONG_PTR argument;
    };

    struct Times
    {
        LONGLONG created; // as a file time
        LONGLONG ended;   // 0 while it runs
        ProcessorTimes processor;
    };

    // Empty, with errno, if there can't be a new thread.
    static Ref<ThreadObject> Start(Routine routine, void* argument, std::size_t stackSize, bool isSuspended);

    // The object of the calling thread, made if it doesn't exist yet.
    static ThreadObject& Current();
    // Null where the calling thread has none yet, or is so near its end that it can't be stopped any more.
    static ThreadObject* CurrentIfKnown();
    // The living thread with that id, if it has an object.
    static Ref<ThreadObject> Find(DWORD id);

    ThreadObject(Routine routine, void* argument);

    DWORD id() const { return _id; }
    bool HasEnded() const;
    DWORD ExitCode() const;
    Times GetTimes() const;

    // The former count, or Gate::failed with the last error.
    DWORD Suspend();
    DWORD Resume();
    BOOL Terminate(DWORD exitCode);
    // Ends the calling thread, without running destructors of its functions.
    [[noreturn]] void EndNow(DWORD exitCode);
    // Passes the gate that the calling thread entered. Doesn't return if the thread is to end, unless it is inside a
    // critical section: then it goes on until it has left the last one.
    void LeaveGate();

    static void AfterForkInChild();

    BOOL QueueApc(const Apc& apc);
    // Runs what is queued to the calling thread.
    void RunApcs();

    int priority() const { return _priority.load(); }
    BOOL SetPriority(int priority);

    Gate gate;

    // What follows is guarded by the dispatcher's lock.

    bool IsSignalled() const override { return _hasEnded; }
    bool HasApcs() const { return !_apcs.empty(); }
    // Lets the thread's wait, if there is one, look again.
    void Wake();
    void SetWaiter(Waiter* waiter) { _waiter = waiter; }
    MessageQueue* queue() { return _queue ? &*_queue : nullptr; }
    // The calling thread's own, made if it doesn't exist yet.
    MessageQueue& OwnQueue();

private:
    static void* Entry(void* object);
    static void OnThreadEnd(void* object);

    void Register();
    void Run();

    const Routine _routine; // null for a thread that the layer didn't start
    void* const _argument;
    std::atomic<DWORD> _id = 0;
    LONG _isRegistered = FALSE; // its starter sleeps on it
    std::atomic<int> _priority = 0;
    DWORD _exitCode = 0; // of the thread itself
    sigjmp_buf _start;

    bool _hasEnded = false;
    std::optional<DWORD> _terminationCode;
    Times _times{};
    Waiter* _waiter = nullptr;
    std::deque<Apc> _apcs;
    std::optional<MessageQueue> _queue;
};

} // namespace qxplatform
