// A thread of this process, started by the layer or by other code.
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

// An object that a thread can own, in the list of its owner. The dispatcher lock guards it.
class OwnedByThread
{
public:
    OwnedByThread() = default;
    OwnedByThread(const OwnedByThread&) = delete;
    OwnedByThread& operator=(const OwnedByThread&) = delete;

protected:
    ~OwnedByThread() = default;

    void EnterList(OwnedByThread*& first);
    void LeaveList();

private:
    friend class ThreadObject;

    // Called when the owner has ended. The object is in no list any more.
    virtual void Abandon() = 0;

    OwnedByThread* _nextOwned = nullptr;
    OwnedByThread** _ownedLink = nullptr;
};

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
        LONGLONG ended;   // 0 while the thread runs
        ProcessorTimes processor;
    };

    // Starts a thread. Empty and sets errno on failure.
    static Ref<ThreadObject> Start(Routine routine, void* argument, std::size_t stackSize, bool isSuspended);

    // Returns the object of the calling thread, creating it if necessary.
    static ThreadObject& Current();
    // Returns null if the calling thread has no object yet, or is so close to its end that it can't be stopped any
    // more.
    static ThreadObject* CurrentIfKnown();
    // Returns the running thread with that id, if it has an object.
    static Ref<ThreadObject> Find(DWORD id);

    ThreadObject(Routine routine, void* argument);

    DWORD id() const { return _id; }
    bool HasEnded() const;
    DWORD ExitCode() const;
    Times GetTimes() const;

    // Return the previous count, or Gate::kFailed with a last error.
    DWORD Suspend();
    DWORD Resume();
    BOOL Terminate(DWORD exitCode);
    // Ends the calling thread without running destructors of its functions.
    [[noreturn]] void EndNow(DWORD exitCode);
    // Passes the gate that the calling thread has entered. Doesn't return if the thread has been terminated, unless it
    // holds a critical section; then it continues until it has left the last one.
    void LeaveGate();

    static void AfterForkInChild();

    BOOL QueueApc(const Apc& apc);
    // Runs the calls queued to the calling thread.
    void RunApcs();

    int priority() const { return _priority.load(); }
    BOOL SetPriority(int priority);

    Gate gate;

    // A request for the thread's registers, which the handler of the stop signal takes and fulfils.
    struct ContextRequest
    {
        CONTEXT* context;
        LONG isDone = FALSE;
    };
    std::atomic<ContextRequest*> contextRequest = nullptr;
    // The registers with which the thread continues after the stop signal, while the signal's handler is at the gate.
    std::atomic<const void*> interruptedAt = nullptr;

    // The dispatcher lock guards the members below.

    bool IsSignalled() const override { return _hasEnded; }
    bool HasApcs() const { return !_apcs.empty(); }
    // Makes the thread's wait, if there is one, check again.
    void Wake();
    void SetWaiter(Waiter* waiter) { _waiter = waiter; }
    MessageQueue* queue() { return _queue ? &*_queue : nullptr; }
    // Returns the calling thread's queue, creating it if necessary.
    MessageQueue& OwnQueue();
    OwnedByThread*& FirstOwned() { return _firstOwned; }

private:
    static void* Entry(void* object);
    static void OnThreadEnd(void* object);

    void AbandonOwned();

    void Register();
    void Run();

    const Routine _routine; // null if the layer didn't start the thread
    void* const _argument;
    std::atomic<DWORD> _id = 0;
    LONG _isRegistered = FALSE; // the thread that starts this one waits on it
    std::atomic<int> _priority = 0;
    DWORD _exitCode = 0; // set by the thread itself
    sigjmp_buf _start;

    // The living threads, in a list that needs no memory of its own.
    void Link();
    void Unlink();
    static ThreadObject* _first;
    ThreadObject* _next = nullptr;
    ThreadObject** _link = nullptr;

    bool _hasEnded = false;
    std::optional<DWORD> _terminationCode;
    Times _times{};
    Waiter* _waiter = nullptr;
    OwnedByThread* _firstOwned = nullptr;
    std::deque<Apc> _apcs;
    std::optional<MessageQueue> _queue;
};

} // namespace qxplatform
