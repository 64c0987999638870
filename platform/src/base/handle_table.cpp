#include "base/handle_table.h"

#include "base/mutex.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <type_traits>

namespace qxplatform
{

// `state` identifies the handle and contains the open flag.
struct HandleEntry
{
    std::atomic<std::uint64_t> state = std::uint64_t{1} << 32;
    Object* object = nullptr;
    DWORD access = 0;
    std::uint32_t nextFree = 0;
};

namespace
{

using Entry = HandleEntry;

// The state word of an entry. A look-up pins the entry, takes a reference to the object and unpins it. Closing clears
// the open bit. The closing of the entry or the removal of its last pin, whichever comes later, returns it to the free
// list, so neither side waits for the other.
constexpr std::uint64_t kOpenBit = 1;
constexpr std::uint64_t kOnePin = 2;
constexpr std::uint64_t kPinMask = 0xFFFFFFFE;
constexpr int kGenerationShift = 32;

constexpr std::uint32_t kChunkSize = 1024;
constexpr std::uint32_t kChunkCount = 4096;
constexpr std::uint32_t kNoEntry = kChunkSize * kChunkCount;

using Chunk = std::array<Entry, kChunkSize>;

// Handles are multiples of 4, as callers expect. The index follows the two low bits, and the generation follows the
// index. Generations start at 1, so that small numbers from elsewhere are never valid handles.
constexpr int kIndexShift = 2;
constexpr int kHandleGenerationShift = 26;
static_assert(kNoEntry <= 1u << (kHandleGenerationShift - kIndexShift));

HANDLE MakeHandle(std::uint32_t index, std::uint32_t generation)
{
    return reinterpret_cast<HANDLE>(
        std::uint64_t{generation} << kHandleGenerationShift | std::uint64_t{index} << kIndexShift);
}

class Table
{
public:
    Entry* Find(HANDLE handle, std::uint32_t& generation) const;
    HANDLE Add(Object* object, DWORD access);
    void GiveBack(Entry& entry, std::uint32_t index);
    std::uint32_t IndexOf(HANDLE handle) const;
    void ForEach(void (*function)(Object&));

private:
    Entry& At(std::uint32_t index) const
    {
        return (*_chunks[index / kChunkSize].load(std::memory_order_acquire))[index % kChunkSize];
    }
    std::uint32_t TakeFree();

    std::array<std::atomic<Chunk*>, kChunkCount> _chunks{};
    Mutex _freeLock; // guards the members below
    std::uint32_t _used = 0;
    std::uint32_t _firstFree = kNoEntry;
    std::uint32_t _lastFree = kNoEntry;
};

// Never destroyed: callers' static objects may close handles after the layer's static objects are gone.
static_assert(std::is_trivially_destructible_v<Table>);
constinit Table theTable;

std::uint32_t Table::IndexOf(HANDLE handle) const
{
    constexpr std::uint64_t kMask = (std::uint64_t{1} << kHandleGenerationShift) - 1;
    return static_cast<std::uint32_t>((reinterpret_cast<std::uint64_t>(handle) & kMask) >> kIndexShift);
}

Entry* Table::Find(HANDLE handle, std::uint32_t& generation) const
{
    const std::uint32_t index = IndexOf(handle);
    const std::uint64_t high = reinterpret_cast<std::uint64_t>(handle) >> kHandleGenerationShift;
    generation = static_cast<std::uint32_t>(high);
    if (index >= kNoEntry || high != generation || MakeHandle(index, generation) != handle)
        return nullptr;
    Chunk* const chunk = _chunks[index / kChunkSize].load(std::memory_order_acquire);
    return chunk == nullptr ? nullptr : &(*chunk)[index % kChunkSize];
}

// Returns the entry that has been free for the longest time, or a new one.
std::uint32_t Table::TakeFree()
{
    if (_firstFree != kNoEntry)
    {
        const std::uint32_t index = _firstFree;
        _firstFree = At(index).nextFree;
        if (_firstFree == kNoEntry)
            _lastFree = kNoEntry;
        return index;
    }
    if (_used == kNoEntry)
        return kNoEntry;
    if (_used % kChunkSize == 0)
    {
        Chunk* const chunk = new (std::nothrow) Chunk;
        if (chunk == nullptr)
            return kNoEntry;
        _chunks[_used / kChunkSize].store(chunk, std::memory_order_release);
    }
    return _used++;
}

HANDLE Table::Add(Object* object, DWORD access)
{
    const std::lock_guard lock(_freeLock);
    const std::uint32_t index = TakeFree();
    if (index == kNoEntry)
        return nullptr;
    Entry& entry = At(index);
    object->AddRef();
    object->AddHandle();
    entry.object = object;
    entry.access = access;
    const std::uint64_t state = entry.state.load(std::memory_order_relaxed);
    entry.state.store(state | kOpenBit, std::memory_order_release);
    return MakeHandle(index, static_cast<std::uint32_t>(state >> kGenerationShift));
}

void Table::GiveBack(Entry& entry, std::uint32_t index)
{
    Object* const object = std::exchange(entry.object, nullptr);
    const std::uint32_t generation =
        static_cast<std::uint32_t>(entry.state.load(std::memory_order_relaxed) >> kGenerationShift) + 1;
    entry.state.store(std::uint64_t{generation == 0 ? 1 : generation} << kGenerationShift, std::memory_order_release);
    {
        const std::lock_guard lock(_freeLock);
        entry.nextFree = kNoEntry;
        (_lastFree == kNoEntry ? _firstFree : At(_lastFree).nextFree) = index;
        _lastFree = index;
    }
    object->Release();
}

void Table::ForEach(void (*function)(Object&))
{
    std::uint32_t used;
    {
        const std::lock_guard lock(_freeLock);
        used = _used;
    }
    for (std::uint32_t index = 0; index < used; ++index)
    {
        const std::uint64_t state = At(index).state.load(std::memory_order_acquire);
        const HandlePin pin(MakeHandle(index, static_cast<std::uint32_t>(state >> kGenerationShift)));
        if (pin)
            function(pin.object());
    }
}

} // namespace

HandlePin::HandlePin(HANDLE handle) : _index(theTable.IndexOf(handle))
{
    std::uint32_t generation = 0;
    HandleEntry* const entry = theTable.Find(handle, generation);
    if (entry == nullptr)
        return;
    std::uint64_t state = entry->state.load(std::memory_order_relaxed);
    do
    {
        if ((state & kOpenBit) == 0 || state >> kGenerationShift != generation)
            return;
    } while (!entry->state.compare_exchange_weak(
        state, state + kOnePin, std::memory_order_acquire, std::memory_order_relaxed));
    _entry = entry;
}

HandlePin::~HandlePin()
{
    if (_entry == nullptr)
        return;
    const std::uint64_t before = _entry->state.fetch_sub(kOnePin, std::memory_order_acq_rel);
    if ((before & kOpenBit) == 0 && (before & kPinMask) == kOnePin)
        theTable.GiveBack(*_entry, _index);
}

Object& HandlePin::object() const
{
    return *_entry->object;
}

DWORD HandlePin::access() const
{
    return _entry->access;
}

bool HandlePin::Close()
{
    return (_entry->state.fetch_and(~kOpenBit, std::memory_order_acq_rel) & kOpenBit) != 0;
}

HANDLE AddHandle(const Ref<Object>& object, DWORD access)
{
    const HANDLE handle = theTable.Add(object.get(), access);
    if (handle == nullptr)
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
    return handle;
}

Ref<Object> ObjectOf(HANDLE handle, DWORD* access)
{
    const HandlePin pin(handle);
    if (!pin)
        return {};
    if (access != nullptr)
        *access = pin.access();
    return Ref<Object>(&pin.object());
}

BOOL CloseEntry(HANDLE handle, bool (*mayClose)(const Object&))
{
    HandlePin pin(handle);
    if (!pin || !mayClose(pin.object()) || !pin.Close())
        return Fail(ERROR_INVALID_HANDLE);
    pin.object().RemoveHandle();
    return TRUE;
}

void ForEachObject(void (*function)(Object&))
{
    theTable.ForEach(function);
}

} // namespace qxplatform
