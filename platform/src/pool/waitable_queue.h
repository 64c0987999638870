// A queue from which waiting threads take: each item goes to one of them, the one that waits for the shortest time.
#pragma once

#include "base/futex.h"
#include "base/mutex.h"
#include "threads/wait.h"

#include <mutex>
#include <sysinfoapi.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace qxplatform
{

// The items have a lock of their own below the dispatcher's, so that threads that needn't wait, and those that have
// nobody to wake, leave that one alone.
template <class Item>
class WaitableQueue : public Waitable
{
public:
    using Waitable::Waitable;

    // No item if none came in time, or when the queue has ended. The result is that of WaitFor().
    DWORD WaitForItem(DWORD milliseconds, std::optional<Item>& item)
    {
        const ULONGLONG begin = GetTickCount64();
        DWORD left = milliseconds;
        for (;;)
        {
            const DWORD result = WaitFor({Ref<Waitable>(this)}, {false, left, false});
            item = std::exchange(taken, std::nullopt);
            if (result != WAIT_OBJECT_0 || item || _hasEnded)
                return result;
            // One who didn't wait was quicker.
            if (milliseconds != INFINITE)
                left = milliseconds - static_cast<DWORD>(std::min<ULONGLONG>(GetTickCount64() - begin, milliseconds));
        }
    }

    // An item that is there.
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

    // Without the dispatcher's lock, which is taken only if somebody has to be woken.
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

    // With the dispatcher's lock held.

    void Put(Item item)
    {
        Append(std::move(item));
        if (LONG* const word = MarkLatestWaiter())
            FutexWakeOne(word);
    }

    // What is in the queue can still be taken.
    void End()
    {
        _hasEnded = true;
        WakeWaiters();
    }

    bool HasEnded() const { return _hasEnded; }
    std::size_t Count() const { return _count.load(); }

    // The items that the predicate names leave the queue; how many.
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

    // A queue that is never empty would grow for ever. Where half of it is gone, moving the rest costs no more than
    // what was saved.
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
    std::vector<Item> _items; // from _first on; those in front of it were taken
    std::size_t _first = 0;
    std::atomic<std::size_t> _count = 0; // of those that are there; changed under the lock
    std::atomic<bool> _hasEnded = false;
};

} // namespace qxplatform
