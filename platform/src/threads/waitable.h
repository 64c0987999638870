// Objects that can be waited for.
#pragma once

#include "base/mutex.h"
#include "base/object.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <vector>

namespace qxplatform
{

struct Waiter;

// One lock guards the state of all such objects, so that a wait for several sees them at one moment. It is held for
// moments only.
Mutex& DispatcherLock();

class Waitable : public Object
{
public:
    using Object::Object;

    Waitable* AsWaitable() override { return this; }

    // All of these are called with the dispatcher's lock held.

    virtual bool IsSignalled() const = 0;

    // What a wait that ends by this object does to it.
    virtual void Take() {}

    void AddWaiter(Waiter& waiter);
    void RemoveWaiter(Waiter& waiter);

protected:
    // To be called when the object has become signalled.
    void WakeWaiters();

    // For objects from which each wait takes something: the latest of those waits that weren't woken yet counts as
    // woken now. Gives the word that it sleeps on, for FutexWakeOne(), or null. Woken without the lock, it needn't wait
    // for that first.
    LONG* MarkLatestWaiter();

    std::size_t WaiterCount()
    {
        ForgetForeignWaiters();
        return _waiters.size();
    }

    // Without the lock. A wait is counted before it looks at its objects, so that whoever changes an object and then
    // finds nobody here has been seen.
    bool HasWaiters() const { return _waiterCount.load() != 0; }

private:
    void ForgetForeignWaiters();

    std::vector<Waiter*> _waiters;
    unsigned _generation = ForkGeneration(); // of the process whose threads wait
    std::atomic<std::size_t> _waiterCount = 0; // of them
};

// Lets a wait look again.
void WakeWaiter(Waiter& waiter);

} // namespace qxplatform
