// The layer's lock.
#pragma once

#include "base/lock_word.h"

namespace qxplatform
{

// A lock as std::mutex, which a forked child can use too. It is held for moments only. Constant initialisation and no
// destructor: it may be a static object and outlive those of other modules.
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
