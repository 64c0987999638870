#include "threads/gate.h"

#include "base/futex.h"

namespace qxplatform
{

static_assert(sizeof(std::atomic<LONG>) == sizeof(LONG) && std::atomic<LONG>::is_always_lock_free);

LONG* Gate::Word()
{
    return reinterpret_cast<LONG*>(&_word);
}

bool Gate::Leave()
{
    LONG state = _word.load();
    while ((state & kMustEnd) == 0)
    {
        if ((state & kCountMask) == 0)
        {
            if (state == 0 || _word.compare_exchange_weak(state, state & ~kAtGate))
                return true;
            continue;
        }
        FutexWait(Word(), state);
        state = _word.load();
    }
    return false;
}

DWORD Gate::Suspend()
{
    LONG state = _word.load();
    do
    {
        if ((state & kCountMask) == static_cast<LONG>(kMaximumSuspendCount))
            return kFailed;
    } while (!_word.compare_exchange_weak(state, state + 1));
    return static_cast<DWORD>(state & kCountMask);
}

DWORD Gate::Resume()
{
    LONG state = _word.load();
    do
    {
        if ((state & kCountMask) == 0)
            return 0;
    } while (!_word.compare_exchange_weak(state, state - 1));
    if ((state & kCountMask) == 1)
        FutexWakeOne(Word());
    return static_cast<DWORD>(state & kCountMask);
}

void Gate::OrderEnd()
{
    _word.fetch_or(kMustEnd);
    FutexWakeOne(Word());
}

} // namespace qxplatform
