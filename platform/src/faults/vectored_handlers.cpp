#include "faults/vectored_handlers.h"

#include <errhandlingapi.h>

#include "base/mutex.h"
#include "faults/fault_signals.h"

#include <atomic>
#include <cstddef>
#include <mutex>

namespace qxplatform
{
namespace
{

constexpr std::size_t kMostHandlers = 64;

// A place for a handler. Its address is the handle.
struct Place
{
    std::atomic<PVECTORED_EXCEPTION_HANDLER> handler = nullptr; // null if the place is free
    std::atomic<LONG64> rank = 0;                               // handlers are called in ascending order
};

constinit Mutex lock; // for changes only
constinit Place places[kMostHandlers];
constinit LONG64 firstRank = 0;
constinit LONG64 lastRank = 0;

// The handlers in their order, copied because handlers may be added and removed while one of them runs.
class PresentHandlers
{
public:
    PresentHandlers()
    {
        for (const Place& place : places)
            if (const PVECTORED_EXCEPTION_HANDLER handler = place.handler.load(std::memory_order_acquire))
                Insert({handler, place.rank.load(std::memory_order_relaxed)});
    }

    const auto* begin() const { return _ranked; }
    const auto* end() const { return _ranked + _count; }

private:
    struct Ranked
    {
        PVECTORED_EXCEPTION_HANDLER handler;
        LONG64 rank;
    };

    void Insert(const Ranked& added)
    {
        std::size_t at = _count++;
        for (; at > 0 && _ranked[at - 1].rank > added.rank; --at)
            _ranked[at] = _ranked[at - 1];
        _ranked[at] = added;
    }

    Ranked _ranked[kMostHandlers];
    std::size_t _count = 0;
};

} // namespace

bool OfferToVectoredHandlers(EXCEPTION_POINTERS& exception)
{
    for (const auto& [handler, rank] : PresentHandlers())
        if (handler(&exception) == EXCEPTION_CONTINUE_EXECUTION)
            return true;
    return false;
}

} // namespace qxplatform

using namespace qxplatform;

PVOID WINAPI AddVectoredExceptionHandler(ULONG First, PVECTORED_EXCEPTION_HANDLER Handler)
{
    const std::lock_guard guard(lock);
    for (Place& place : places)
        if (place.handler.load(std::memory_order_relaxed) == nullptr)
        {
            UseFaultSignals();
            place.rank.store(First != 0 ? --firstRank : ++lastRank, std::memory_order_relaxed);
            place.handler.store(Handler, std::memory_order_release);
            return &place;
        }
    return nullptr;
}

ULONG WINAPI RemoveVectoredExceptionHandler(PVOID Handle)
{
    const std::lock_guard guard(lock);
    for (Place& place : places)
        if (&place == Handle && place.handler.exchange(nullptr, std::memory_order_relaxed) != nullptr)
        {
            ReleaseFaultSignals();
            return TRUE;
        }
    return FALSE;
}
