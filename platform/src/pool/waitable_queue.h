// A queue from which waiting threads take: each item goes to one of them, the one that waits for the shortest time.
#pragma once

#include "sync/wait.h"

#include <deque>
#include <optional>

namespace qxplatform
{

template <class Item>
class WaitableQueue : public Waitable
{
public:
    using Waitable::Waitable;

    // No item if none came in time, or when the queue has ended. The result is that of WaitFor().
    DWORD WaitForItem(DWORD milliseconds, std::optional<Item>& item)
    {
        const DWORD result = WaitFor({Ref<Waitable>(this)}, {false, milliseconds, false});
        item = std::exchange(taken, std::nullopt);
        return result;
    }

    // With the dispatcher's lock held.

    void Put(Item item)
    {
        _items.push_back(std::move(item));
        WakeLatestWaiter();
    }

    // What is in the queue can still be taken.
    void End()
    {
        _hasEnded = true;
        WakeWaiters();
    }

    bool HasEnded() const { return _hasEnded; }
    size_t Count() const { return _items.size(); }

    // The items that the predicate names leave the queue; how many.
    template <class Predicate>
    size_t Remove(Predicate predicate)
    {
        return std::erase_if(_items, predicate);
    }

    bool IsSignalled() const override { return _hasEnded || !_items.empty(); }

    // Runs on the thread that waited.
    void Take() override
    {
        if (_items.empty())
            return;
        taken = std::move(_items.front());
        _items.pop_front();
    }

private:
    inline static thread_local std::optional<Item> taken;

    std::deque<Item> _items;
    bool _hasEnded = false;
};

} // namespace qxplatform
