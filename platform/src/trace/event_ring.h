// Stores the events that threads have written until they are in the file.
#pragma once

#include <evntprov.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qxplatform
{

// An event as it is in the rings and in the file. The pieces of its data follow, padded to a multiple of 8 bytes.
struct EventHead
{
    std::uint32_t size;     // of head, data and padding
    std::uint32_t dataSize; // without padding
    std::uint64_t time;     // nanoseconds of the monotonic clock
    std::uint32_t threadId;
    std::uint32_t registration; // numbers the providers of the process
    EVENT_DESCRIPTOR descriptor;
};
static_assert(sizeof(EventHead) == 40);

inline constexpr std::size_t kRingSize = 256 * 1024;
inline constexpr std::size_t kLongestEvent = 64 * 1024;

// The ring of one thread: it writes, and the thread of the layer reads. Rings are never freed; when a thread ends, the
// next new one takes over its ring.
struct EventRing
{
    EventRing* next = nullptr;
    std::atomic<bool> isTaken = true;
    alignas(64) std::atomic<std::uint64_t> written = 0;
    std::atomic<std::uint32_t> lost = 0; // events that didn't fit
    alignas(64) std::atomic<std::uint64_t> read = 0;
    alignas(64) unsigned char data[kRingSize];
};

// Appends an event to the calling thread's ring. Returns false if it doesn't fit or there is no memory; it then counts
// as lost. Takes no lock and never waits. Sets `isHalfFull` if the event fills half of the ring.
bool AppendToRing(EventHead head, ULONG count, const EVENT_DATA_DESCRIPTOR* pieces, bool& isHalfFull);

// Moves the events of the next ring after `ring` that has any to `bytes`, and returns this ring, or null at the end.
// Adds the lost ones to `lost`. Only one thread may call this at a time.
EventRing* TakeFromRings(EventRing* ring, std::string& bytes, std::uint64_t& lost);

// Removes all events. Called in a forked child, whose events are in the parent's rings as well.
void ClearRings();

} // namespace qxplatform
