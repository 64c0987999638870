#include "core/forever.h"

#include <atomic>

namespace qx
{
namespace
{

// All objects are reachable from here, so leak checkers don't report them.
constinit std::atomic<Kept*> latest = nullptr;

} // namespace

void Keep(std::unique_ptr<Kept> object)
{
    Kept* const kept = object.release();
    kept->_next = latest.load();
    while (!latest.compare_exchange_weak(kept->_next, kept))
    {
    }
}

void DropForeverObjects()
{
    for (Kept* next = latest.exchange(nullptr); next != nullptr;)
    {
        const std::unique_ptr<Kept> object(next);
        next = object->_next;
    }
}

} // namespace qx
