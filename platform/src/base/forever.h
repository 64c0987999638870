// Objects that exist until the process ends.
#pragma once

#include "base/mutex.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace qxplatform
{

// An object that is created at its first use and never destroyed, because static objects of other modules may need it
// while the process ends. Unlike a function-local static object, it can be used in a forked child even if another
// thread was creating it during the fork. Leak checkers regard the object as reachable through this static pointer.
//
//     static constinit Forever<Cache> cache;
//     cache.Get().Find(...)
template <class T>
class Forever
{
public:
    constexpr Forever() = default;
    Forever(const Forever&) = delete;
    Forever& operator=(const Forever&) = delete;

    T& Get()
    {
        return Get([] { return T(); });
    }

    // The same, but constructs the object from the result of `make`.
    template <class Make>
    T& Get(Make make)
    {
        if (T* const made = _object.load(std::memory_order_acquire))
            return *made;
        const std::lock_guard guard(_lock);
        if (T* const made = _object.load(std::memory_order_relaxed))
            return *made;
        T* const object = new T(make());
        _object.store(object, std::memory_order_release);
        return *object;
    }

private:
    std::atomic<T*> _object = nullptr;
    Mutex _lock;
};

} // namespace qxplatform
