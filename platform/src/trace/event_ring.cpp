#include "trace/event_ring.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <pthread.h>
#include <sys/mman.h>

namespace qxplatform
{
namespace
{

constinit std::atomic<EventRing*> firstRing = nullptr;
constinit std::atomic<std::uint32_t> lostWithoutRing = 0;

[[gnu::tls_model("initial-exec")]] constinit thread_local EventRing* ownRing = nullptr;

void LeaveRing(void* ring)
{
    ownRing = nullptr;
    static_cast<EventRing*>(ring)->isTaken.store(false, std::memory_order_release);
}

// Calls LeaveRing when a thread with a ring ends.
struct ThreadEndKey
{
    ThreadEndKey() { isThere = pthread_key_create(&key, &LeaveRing) == 0; }

    pthread_key_t key{};
    bool isThere;
};

EventRing* MakeRing()
{
    // Mapped, because the allocator's locks must not be taken here.
    void* const memory = mmap(nullptr, sizeof(EventRing), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    auto* const ring = ::new (memory) EventRing;
    ring->next = firstRing.load(std::memory_order_relaxed);
    while (!firstRing.compare_exchange_weak(ring->next, ring, std::memory_order_release, std::memory_order_relaxed))
    {
    }
    return ring;
}

EventRing* TakeRing()
{
    static const ThreadEndKey threadEnd;
    if (!threadEnd.isThere)
        return nullptr;
    EventRing* ring = firstRing.load(std::memory_order_acquire);
    for (; ring; ring = ring->next)
        if (bool expected = false; ring->isTaken.compare_exchange_strong(expected, true))
            break;
    if (!ring)
        ring = MakeRing();
    if (ring && pthread_setspecific(threadEnd.key, ring) != 0)
    {
        ring->isTaken.store(false, std::memory_order_release);
        ring = nullptr;
    }
    return ownRing = ring;
}

// Most pieces are numbers; copies those sizes without a function call.
void CopyPiece(unsigned char* target, const void* data, std::size_t size)
{
    if (size == 1)
        *target = *static_cast<const unsigned char*>(data);
    else if (size == 4)
        std::memcpy(target, data, 4);
    else
        std::memcpy(target, data, size);
}

void CopyIn(EventRing& ring, std::uint64_t position, const void* data, std::size_t size)
{
    const std::size_t offset = position % kRingSize;
    if (size <= kRingSize - offset) [[likely]]
        return CopyPiece(ring.data + offset, data, size);
    const std::size_t first = kRingSize - offset;
    std::memcpy(ring.data + offset, data, first);
    std::memcpy(ring.data, static_cast<const unsigned char*>(data) + first, size - first);
}

} // namespace

bool AppendToRing(EventHead head, ULONG count, const EVENT_DATA_DESCRIPTOR* pieces, bool& isHalfFull)
{
    EventRing* const ring = ownRing ? ownRing : TakeRing();
    if (!ring)
    {
        ++lostWithoutRing;
        return false;
    }
    std::uint64_t position = ring->written.load(std::memory_order_relaxed);
    const std::size_t used = position - ring->read.load(std::memory_order_acquire);
    if (head.size > kRingSize - used)
    {
        ring->lost.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    const std::uint64_t end = position + head.size;
    CopyIn(*ring, position, &head, sizeof(head));
    position += sizeof(head);
    for (ULONG piece = 0; piece < count; ++piece)
    {
        CopyIn(*ring, position, reinterpret_cast<const void*>(pieces[piece].Ptr), pieces[piece].Size);
        position += pieces[piece].Size;
    }
    constexpr unsigned char kPadding[8] = {};
    CopyIn(*ring, position, kPadding, end - position);
    ring->written.store(end, std::memory_order_release);
    isHalfFull = used < kRingSize / 2 && used + head.size >= kRingSize / 2;
    return true;
}

EventRing* TakeFromRings(EventRing* ring, std::string& bytes, std::uint64_t& lost)
{
    if (!ring)
        lost += lostWithoutRing.exchange(0);
    for (ring = ring ? ring->next : firstRing.load(std::memory_order_acquire); ring; ring = ring->next)
    {
        lost += ring->lost.exchange(0, std::memory_order_relaxed);
        const std::uint64_t begin = ring->read.load(std::memory_order_relaxed);
        const std::uint64_t end = ring->written.load(std::memory_order_acquire);
        if (begin == end)
            continue;
        const auto* const data = reinterpret_cast<const char*>(ring->data);
        const std::size_t offset = begin % kRingSize, size = end - begin;
        const std::size_t first = std::min(size, kRingSize - offset);
        bytes.append(data + offset, first);
        bytes.append(data, size - first);
        ring->read.store(end, std::memory_order_release);
        return ring;
    }
    return nullptr;
}

void ClearRings()
{
    for (EventRing* ring = firstRing.load(); ring; ring = ring->next)
    {
        ring->read.store(ring->written.load());
        ring->lost = 0;
        ring->isTaken = ring == ownRing;
    }
    lostWithoutRing = 0;
}

} // namespace qxplatform
