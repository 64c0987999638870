#include "heaps/call_chains.h"

#include <windows.h>

#include <heapapi.h>

#include <algorithm>
#include <atomic>
#include <bit>

namespace qx
{
namespace
{

std::atomic<CaptureProtection> captureProtection = nullptr;

// Walks the stack from here and skips the library's own frames, up to the return address `caller`. Returns 0 if the
// walk doesn't reach it.
[[gnu::noinline]] unsigned CaptureThroughLibrary(const void* caller, void** addresses, unsigned count)
{
    constexpr unsigned kFrames = 40;
    scCaller entries[kFrames];
    const scCaller* const end = entries + CaptureCallers(entries, kFrames);
    const scCaller* entry = std::find_if(
        static_cast<const scCaller*>(entries), end, [caller](const scCaller& each) { return each.address == caller; });
    unsigned stored = 0;
    for (; entry != end && stored < count; ++entry)
        addresses[stored++] = entry->address;
    return stored;
}

unsigned CaptureChain(const CallSite& caller, void** addresses, unsigned count)
{
    const unsigned stored = CaptureFrom(caller, addresses, count);
    return stored != 0 ? stored : CaptureThroughLibrary(caller.address, addresses, count);
}

unsigned CaptureProtected(const CallSite& caller, void** addresses, unsigned count)
{
    const CaptureProtection protection = captureProtection.load(std::memory_order_acquire);
    if (protection == nullptr) [[likely]]
        return CaptureChain(caller, addresses, count);
    protection(true);
    const unsigned stored = CaptureChain(caller, addresses, count);
    protection(false);
    return stored;
}

std::uint64_t Mixed(std::uint64_t hash)
{
    hash *= 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 29);
}

} // namespace

CaptureProtection SetCaptureProtection(CaptureProtection protection)
{
    return captureProtection.exchange(protection, std::memory_order_acq_rel);
}

CallChains::Captured::Captured(const CallSite& caller)
    : _count(CaptureProtected(caller, _addresses, scCallChain::kEntries))
{
    if (_count != 0)
        return;
    // The stack can't be walked, but its innermost address is known.
    _addresses[0] = caller.address;
    _count = 1;
}

CallChains::~CallChains()
{
    for (std::size_t i = 0; i < _buckets; ++i)
        while (Record* const record = _byAddress[i])
        {
            _byAddress[i] = record->nextByAddress;
            HeapFree(GetProcessHeap(), 0, record);
        }
    if (_byContent != _firstByContent)
        HeapFree(GetProcessHeap(), 0, _byContent);
}

const scCallChain* CallChains::Use(const Captured& captured)
{
    const std::uint32_t hash = HashOf(captured);
    for (Record* record = _byContent[hash & (_buckets - 1)]; record != nullptr; record = record->nextByContent)
    {
        if (record->hash != hash)
            continue;
        std::size_t same = 0;
        while (same < captured.Count() && record->chain.entries[same].address == captured[same])
            ++same;
        const bool endsHere = same == scCallChain::kEntries || record->chain.entries[same].address == nullptr;
        if (same == captured.Count() && endsHere)
        {
            ++record->users;
            return &record->chain;
        }
    }
    Grow();
    auto* const record = static_cast<Record*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(Record)));
    if (record == nullptr)
        return nullptr;
    for (std::size_t i = 0; i < captured.Count(); ++i)
        record->chain.entries[i].address = captured[i];
    record->users = 1;
    record->hash = hash;
    ++_count;
    Insert(*record);
    return &record->chain;
}

void CallChains::Release(const scCallChain* chain)
{
    Record* const record = Find(chain);
    if (record == nullptr || --record->users != 0)
        return;
    Remove(*record);
    --_count;
    HeapFree(GetProcessHeap(), 0, record);
}

std::size_t CallChains::HashOf(const void* address)
{
    return static_cast<std::size_t>(Mixed(reinterpret_cast<std::uintptr_t>(address)) >> 32);
}

// Combines the addresses with rotations, because one multiplication per address would take longer than comparing the
// chains.
std::uint32_t CallChains::HashOf(const Captured& captured)
{
    std::uint64_t hash = captured.Count();
    for (std::size_t i = 0; i < captured.Count(); ++i)
        hash = std::rotl(hash, 5) ^ reinterpret_cast<std::uintptr_t>(captured[i]);
    return static_cast<std::uint32_t>(Mixed(hash) >> 32);
}

CallChains::Record* CallChains::Find(const scCallChain* chain) const
{
    if (chain == nullptr)
        return nullptr;
    Record* record = _byAddress[HashOf(chain) & (_buckets - 1)];
    while (record != nullptr && &record->chain != chain)
        record = record->nextByAddress;
    return record;
}

// Doubles the number of buckets once there are as many records. If memory runs out, the table stays as it is and
// look-ups take longer.
void CallChains::Grow()
{
    if (_count < _buckets)
        return;
    const std::size_t former = _buckets;
    auto** const buckets =
        static_cast<Record**>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, 4 * former * sizeof(Record*)));
    if (buckets == nullptr)
        return;
    Record** const formerByContent = _byContent;
    _buckets = 2 * former;
    _byContent = buckets;
    _byAddress = buckets + _buckets;
    for (std::size_t i = 0; i < former; ++i)
        for (Record* record = formerByContent[i]; record != nullptr;)
        {
            Record* const next = record->nextByContent;
            Insert(*record);
            record = next;
        }
    if (formerByContent != _firstByContent)
        HeapFree(GetProcessHeap(), 0, formerByContent); // this block contains both arrays
}

void CallChains::Insert(Record& record)
{
    Record*& byContent = _byContent[record.hash & (_buckets - 1)];
    record.nextByContent = byContent;
    byContent = &record;
    Record*& byAddress = _byAddress[HashOf(&record.chain) & (_buckets - 1)];
    record.nextByAddress = byAddress;
    byAddress = &record;
}

void CallChains::Remove(Record& record)
{
    Record** link = &_byContent[record.hash & (_buckets - 1)];
    while (*link != &record)
        link = &(*link)->nextByContent;
    *link = record.nextByContent;
    link = &_byAddress[HashOf(&record.chain) & (_buckets - 1)];
    while (*link != &record)
        link = &(*link)->nextByAddress;
    *link = record.nextByAddress;
}

} // namespace qx
