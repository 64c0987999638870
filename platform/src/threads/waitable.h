// Objects that can be waited for.
#pragma once

#include "base/mutex.h"
#include "base/object.h"

#include <atomic>
#include <cstddef>
#include <mutex>

namespace qxplatform
{

struct Waiter;

// One wait in the list of one object; part of the waiting thread's stack, so that a wait needs no memory.
struct WaitEntry
{
    Waiter* waiter;
    WaitEntry* next;
    WaitEntry** link; // the pointer to this entry
};

// One lock guards the state of all such objects, so that a wait for several of them sees a consistent state. It is held
// only briefly.
Mutex& DispatcherLock();

class Waitable : public Object
{
public:
    using Object::Object;

    Waitable* AsWaitable() override { return this; }

    // All functions are called with the dispatcher lock held, unless noted otherwise.

    virtual bool IsSignalled() const = 0;

    // Called when the object ends a wait. For example, an event with automatic reset is reset.
    virtual void Take() {}

    // Returns true if the object is signalled only because the thread that owned it has ended.
    virtual bool IsAbandoned() const { return false; }

    // Adds and removes an entry whose waiter is set.
    void AddWaiter(WaitEntry& entry);
    void RemoveWaiter(WaitEntry& entry);

protected:
    // Call this when the object has become signalled.
    void WakeWaiters();

    // Marks the most recent wait that hasn't been woken as woken, for objects from which each wait takes something.
    // Returns the word on which that wait blocks, for FutexWakeOne(), or null. Waking it after the lock is released
    // saves the woken thread a wait for the lock.
    LONG* MarkLatestWaiter();

    std::size_t WaiterCount()
    {
        ForgetForeignWaiters();
        return _waiterCount.load();
    }

    // Called without the lock. A wait is counted before it checks its objects. If an object is changed and then no
    // waiter is found here, later waits see the change.
    bool HasWaiters() const { return _waiterCount.load() != 0; }

private:
    void ForgetForeignWaiters();

    WaitEntry* _latestWaiter = nullptr;        // the first of the list
    unsigned _generation = ForkGeneration();   // of the process whose threads wait
    std::atomic<std::size_t> _waiterCount = 0; // the length of the list
};

// Wakes the waiting thread, which then checks its objects again.
void WakeWaiter(Waiter& waiter);

} // namespace qxplatform
