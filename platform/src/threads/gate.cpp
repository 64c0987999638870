#include "threads/gate.h"

#include "threads/futex.h"

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
    while ((state & mustEnd) == 0)
    {
        if ((state & countMask) == 0)
        {
            if (state == 0 || _word.compare_exchange_weak(state, state & ~atGate))
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
        if ((state & countMask) == static_cast<LONG>(maximumSuspendCount))
            return failed;
    } while (!_word.compare_exchange_weak(state, state + 1));
    return static_cast<DWORD>(state & countMask);
}

DWORD Gate::Resume()
{
    LONG state = _word.load();
    do
    {
        if ((state & countMask) == 0)
            return 0;
    } while (!_word.compare_exchange_weak(state, state - 1));
    if ((state & countMask) == 1)
        FutexWakeOne(Word());
    return static_cast<DWORD>(state & countMask);
}

void Gate::OrderEnd()
{
    _word.fetch_or(mustEnd);
    FutexWakeOne(Word());
}

} // namespace qxplatform
