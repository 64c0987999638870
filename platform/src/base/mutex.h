// The layer's lock.
#pragma once

#include "base/lock_word.h"

namespace qxplatform
{

// A lock like std::mutex that also works in a forked child. For short critical sections only. It is
// constant-initialised and has no destructor, so static objects of other modules can use it before its own module is
// initialised and after it is finalised.
class Mutex
{
public:
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock()
    {
        BeginForkHold();
        LockWord word(_word);
        if (!word.TakeIfFree()) [[unlikely]]
            word.Take([] {}, [] {});
    }

    void unlock()
    {
        LockWord(_word).Release();
        EndForkHold();
    }

private:
    LONG _word = 0;
};

} // namespace qxplatform
