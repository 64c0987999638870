// The providers of the process.
#include <evntprov.h>

#include "base/fail.h"
#include "base/mutex.h"
#include "trace/event_ring.h"
#include "trace/trace_worker.h"

#include <processthreadsapi.h>

#include <algorithm>
#include <ctime>
#include <mutex>
#include <new>

namespace qxplatform
{
namespace
{

constexpr std::uint32_t kMostProviders = 4096;
constexpr ULONG kMostPieces = 128;

// A handle consists of the number of the slot, counted from 1, and its generation in the high half. EventWrite reads
// only the generation; everything else is protected by the lock.
struct ProviderSlot
{
    std::atomic<std::uint32_t> generation = 0; // odd while the slot is in use
    PENABLECALLBACK callback = nullptr;
    void* context = nullptr;
    GUID id{};
};

constinit ProviderSlot slots[kMostProviders];
constinit std::uint32_t providerCount = 0, slotsInUse = 0; // slots beyond the second number were never used
constinit Mutex providersLock;

ProviderSlot* SlotOf(REGHANDLE handle)
{
    const auto number = static_cast<std::uint32_t>(handle);
    const auto generation = static_cast<std::uint32_t>(handle >> 32);
    if (number == 0 || number > kMostProviders || generation % 2 == 0)
        return nullptr;
    ProviderSlot& slot = slots[number - 1];
    return slot.generation.load(std::memory_order_acquire) == generation ? &slot : nullptr;
}

void TellProvider(const ProviderSlot& slot, const TraceSession& session)
{
    if (slot.callback)
        slot.callback(
            &slot.id, session.id != 0, session.level, session.anyKeywords, session.allKeywords, nullptr, slot.context);
}

void TellAllProviders(const TraceSession& session)
{
    const std::lock_guard guard(providersLock);
    for (std::uint32_t index = 0; index < slotsInUse; ++index)
        if (slots[index].generation.load(std::memory_order_relaxed) % 2 != 0)
            TellProvider(slots[index], session);
}

DWORD Register(const GUID& id, PENABLECALLBACK callback, void* context, REGHANDLE& handle)
{
    const std::lock_guard guard(providersLock);
    std::uint32_t index = 0;
    while (index < slotsInUse && slots[index].generation.load(std::memory_order_relaxed) % 2 != 0)
        ++index;
    if (index == kMostProviders)
        return ERROR_NO_SYSTEM_RESOURCES;
    TraceSession session;
    if (const DWORD error = StartTraceWorker(&TellAllProviders, session); error != ERROR_SUCCESS)
        return error;
    ProviderSlot& slot = slots[index];
    slotsInUse = std::max(slotsInUse, index + 1);
    slot.id = id;
    slot.callback = callback;
    slot.context = context;
    const std::uint32_t generation = slot.generation.load(std::memory_order_relaxed) + 1;
    slot.generation.store(generation, std::memory_order_release);
    handle = std::uint64_t{generation} << 32 | (index + 1);
    ++providerCount;
    if (session.id != 0)
        TellProvider(slot, session);
    return ERROR_SUCCESS;
}

} // namespace
} // namespace qxplatform

using namespace qxplatform;

ULONG WINAPI EventRegister(LPCGUID id, PENABLECALLBACK callback, PVOID context, PREGHANDLE handle)
try
{
    return id && handle ? Register(*id, callback, context, *handle) : ERROR_INVALID_PARAMETER;
}
catch (const std::bad_alloc&)
{
    return ERROR_NOT_ENOUGH_MEMORY;
}

ULONG WINAPI EventUnregister(REGHANDLE handle)
{
    TraceWorker* ending = nullptr;
    {
        const std::lock_guard guard(providersLock);
        ProviderSlot* const slot = SlotOf(handle);
        if (!slot)
            return ERROR_INVALID_HANDLE;
        slot->generation.fetch_add(1, std::memory_order_release);
        if (--providerCount == 0)
            ending = DetachTraceWorker();
    }
    EndTraceWorker(ending); // without the lock, which its callbacks take
    return ERROR_SUCCESS;
}

ULONG WINAPI EventWrite(REGHANDLE handle, PCEVENT_DESCRIPTOR descriptor, ULONG count, PEVENT_DATA_DESCRIPTOR pieces)
{
    if (!descriptor || count > kMostPieces || (count != 0 && !pieces))
        return ERROR_INVALID_PARAMETER;
    if (!SlotOf(handle))
        return ERROR_INVALID_HANDLE;
    if (!isTraceRecording.load(std::memory_order_acquire))
        return ERROR_SUCCESS;
    const std::uint8_t level = traceLevel.load(std::memory_order_relaxed);
    if (level != 0 && descriptor->Level > level)
        return ERROR_SUCCESS;
    std::uint64_t size = 0;
    for (ULONG piece = 0; piece < count; ++piece)
        size += pieces[piece].Size;
    if (size > kLongestEvent - sizeof(EventHead))
        return ERROR_MORE_DATA;
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto whole = static_cast<std::uint32_t>((sizeof(EventHead) + size + 7) / 8 * 8);
    const EventHead head = {whole, static_cast<std::uint32_t>(size),
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec),
        GetCurrentThreadId(), static_cast<std::uint32_t>(handle), *descriptor};
    bool isHalfFull = false;
    if (!AppendToRing(head, count, pieces, isHalfFull))
        return ERROR_NOT_ENOUGH_MEMORY;
    if (isHalfFull)
        HurryTraceWorker();
    return ERROR_SUCCESS;
}
