// A queue of items for waiting threads. Each item goes to the thread that has waited for the shortest time.
#pragma once

#include "base/futex.h"
#include "base/mutex.h"
#include "threads/wait.h"

#include <sysinfoapi.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace qxplatform
{

// The items have their own lock below the dispatcher lock, so that threads that needn't wait and threads that have
// nobody to wake don't take the dispatcher lock.
template <class Item>
class WaitableQueue : public Waitable
{
public:
    using Waitable::Waitable;

    // Waits for an item. No item is returned after a time-out or when the queue has ended. Returns the result of
    // WaitFor().
    DWORD WaitForItem(DWORD milliseconds, std::optional<Item>& item)
    {
        const ULONGLONG begin = GetTickCount64();
        DWORD left = milliseconds;
        for (;;)
        {
            const DWORD result = WaitFor(WaitObjects(*this), {false, left, false});
            item = std::exchange(taken, std::nullopt);
            if (result != WAIT_OBJECT_0 || item || _hasEnded)
                return result;
            // A thread that didn't wait took the item first.
            if (milliseconds != INFINITE)
                left = milliseconds - static_cast<DWORD>(std::min<ULONGLONG>(GetTickCount64() - begin, milliseconds));
        }
    }

    // Returns an item if one is available.
    std::optional<Item> TakeAtOnce()
    {
        if (Count() == 0)
            return std::nullopt;
        const std::lock_guard guard(_lock);
        if (_first == _items.size())
            return std::nullopt;
        std::optional<Item> item(std::move(_items[_first++]));
        --_count;
        if (_first == _items.size() || (_first >= kCompactAt && _first >= _items.size() / 2))
            Compact();
        return item;
    }

    // Adds an item. Called without the dispatcher lock, which is taken only to wake a thread.
    void PutAndWake(Item item)
    {
        Append(std::move(item));
        if (!HasWaiters())
            return;
        std::unique_lock guard(DispatcherLock());
        LONG* const word = MarkLatestWaiter();
        guard.unlock();
        if (word != nullptr)
            FutexWakeOne(word);
    }

    // Called with the dispatcher lock held.

    void Put(Item item)
    {
        Append(std::move(item));
        if (LONG* const word = MarkLatestWaiter())
            FutexWakeOne(word);
    }

    // Items in the queue can still be taken.
    void End()
    {
        _hasEnded = true;
        WakeWaiters();
    }

    bool HasEnded() const { return _hasEnded; }
    std::size_t Count() const { return _count.load(); }

    // Removes the items selected by the predicate and returns their number.
    template <class Predicate>
    std::size_t Remove(Predicate predicate)
    {
        const std::lock_guard guard(_lock);
        Compact();
        const std::size_t removed = std::erase_if(_items, predicate);
        _count -= removed;
        return removed;
    }

    template <class Predicate>
    std::size_t CountIf(Predicate predicate)
    {
        const std::lock_guard guard(_lock);
        return static_cast<std::size_t>(
            std::count_if(_items.begin() + static_cast<std::ptrdiff_t>(_first), _items.end(), predicate));
    }

    bool IsSignalled() const override { return _hasEnded || Count() != 0; }

    // Runs on the thread that waited.
    void Take() override { taken = TakeAtOnce(); }

private:
    inline static thread_local std::optional<Item> taken;

    // A queue that never becomes empty would grow forever, so taken items are removed in batches. If a batch is at
    // least half of all items, moving the rest takes constant time per item on average.
    static constexpr std::size_t kCompactAt = 4096;

    void Append(Item item)
    {
        const std::lock_guard guard(_lock);
        _items.push_back(std::move(item));
        ++_count;
    }

    void Compact()
    {
        _items.erase(_items.begin(), _items.begin() + static_cast<std::ptrdiff_t>(_first));
        _first = 0;
    }

    mutable Mutex _lock;
    std::vector<Item> _items; // valid from _first on; earlier items have been taken
    std::size_t _first = 0;
    std::atomic<std::size_t> _count = 0; // the number of valid items; changed with the lock held
    std::atomic<bool> _hasEnded = false;
};

} // namespace qxplatform
