#include "base/handle_table.h"

#include <array>
#include <memory>
#include <mutex>
#include <type_traits>

namespace qxplatform
{

// `state` says which handle it is for, and whether it is open.
struct HandleEntry
{
    std::atomic<uint64_t> state = uint64_t{1} << 32;
    Object* object = nullptr;
    DWORD access = 0;
    uint32_t nextFree = 0;
};

namespace
{

using Entry = HandleEntry;

// The state word of an entry. A lookup pins the entry, takes a reference to the object and lets go; closing clears the
// open bit; whoever leaves an entry that is closed and not pinned gives it back. So neither waits for the other.
constexpr uint64_t openBit = 1;
constexpr uint64_t onePin = 2;
constexpr uint64_t pinMask = 0xFFFFFFFE;
constexpr int generationShift = 32;

constexpr uint32_t chunkSize = 1024;
constexpr uint32_t chunkCount = 4096;
constexpr uint32_t noEntry = chunkSize * chunkCount;

using Chunk = std::array<Entry, chunkSize>;

// Handles are multiples of 4, as callers know them, with the index above the two low bits and the generation above
// that. Generations start at 1, so that small numbers of other origin are no handles.
constexpr int indexShift = 2;
constexpr int handleGenerationShift = 26;
static_assert(noEntry <= 1u << (handleGenerationShift - indexShift));

HANDLE MakeHandle(uint32_t index, uint32_t generation)
{
    return reinterpret_cast<HANDLE>(uint64_t{generation} << handleGenerationShift | uint64_t{index} << indexShift);
}

class Table
{
public:
    Entry* Find(HANDLE handle, uint32_t& generation) const;
    HANDLE Add(Object* object, DWORD access);
    void GiveBack(Entry& entry, uint32_t index);
    uint32_t IndexOf(HANDLE handle) const;
    void ForEach(void (*function)(Object&));

private:
    Entry& At(uint32_t index) const
    {
        return (*_chunks[index / chunkSize].load(std::memory_order_acquire))[index % chunkSize];
    }
    uint32_t TakeFree();

    std::array<std::atomic<Chunk*>, chunkCount> _chunks{};
    std::mutex _freeLock; // guards what follows
    uint32_t _used = 0;
    uint32_t _firstFree = noEntry;
    uint32_t _lastFree = noEntry;
};

// Never destroyed: static objects of callers may close handles after those of the layer are gone.
static_assert(std::is_trivially_destructible_v<Table>);
constinit Table theTable;

uint32_t Table::IndexOf(HANDLE handle) const
{
    constexpr uint64_t mask = (uint64_t{1} << handleGenerationShift) - 1;
    return static_cast<uint32_t>((reinterpret_cast<uint64_t>(handle) & mask) >> indexShift);
}

Entry* Table::Find(HANDLE handle, uint32_t& generation) const
{
    const uint32_t index = IndexOf(handle);
    const uint64_t high = reinterpret_cast<uint64_t>(handle) >> handleGenerationShift;
    generation = static_cast<uint32_t>(high);
    if (index >= noEntry || high != generation || MakeHandle(index, generation) != handle)
        return nullptr;
    Chunk* const chunk = _chunks[index / chunkSize].load(std::memory_order_acquire);
    return chunk == nullptr ? nullptr : &(*chunk)[index % chunkSize];
}

// The entry that has been free for the longest, or a fresh one.
uint32_t Table::TakeFree()
{
    if (_firstFree != noEntry)
    {
        const uint32_t index = _firstFree;
        _firstFree = At(index).nextFree;
        if (_firstFree == noEntry)
            _lastFree = noEntry;
        return index;
    }
    if (_used == noEntry)
        return noEntry;
    if (_used % chunkSize == 0)
        _chunks[_used / chunkSize].store(new Chunk, std::memory_order_release);
    return _used++;
}

HANDLE Table::Add(Object* object, DWORD access)
{
    const std::lock_guard lock(_freeLock);
    const uint32_t index = TakeFree();
    if (index == noEntry)
        return nullptr;
    Entry& entry = At(index);
    object->AddRef();
    object->AddHandle();
    entry.object = object;
    entry.access = access;
    const uint64_t state = entry.state.load(std::memory_order_relaxed);
    entry.state.store(state | openBit, std::memory_order_release);
    return MakeHandle(index, static_cast<uint32_t>(state >> generationShift));
}

void Table::GiveBack(Entry& entry, uint32_t index)
{
    Object* const object = std::exchange(entry.object, nullptr);
    const uint32_t generation =
        static_cast<uint32_t>(entry.state.load(std::memory_order_relaxed) >> generationShift) + 1;
    entry.state.store(uint64_t{generation == 0 ? 1 : generation} << generationShift, std::memory_order_release);
    {
        const std::lock_guard lock(_freeLock);
        entry.nextFree = noEntry;
        (_lastFree == noEntry ? _firstFree : At(_lastFree).nextFree) = index;
        _lastFree = index;
    }
    object->Release();
}

void Table::ForEach(void (*function)(Object&))
{
    uint32_t used;
    {
        const std::lock_guard lock(_freeLock);
        used = _used;
    }
    for (uint32_t index = 0; index < used; ++index)
    {
        const uint64_t state = At(index).state.load(std::memory_order_acquire);
        const HandlePin pin(MakeHandle(index, static_cast<uint32_t>(state >> generationShift)));
        if (pin)
            function(pin.object());
    }
}

} // namespace

HandlePin::HandlePin(HANDLE handle) : _index(theTable.IndexOf(handle))
{
    uint32_t generation = 0;
    HandleEntry* const entry = theTable.Find(handle, generation);
    if (entry == nullptr)
        return;
    uint64_t state = entry->state.load(std::memory_order_relaxed);
    do
    {
        if ((state & openBit) == 0 || state >> generationShift != generation)
            return;
    } while (!entry->state.compare_exchange_weak(
        state, state + onePin, std::memory_order_acquire, std::memory_order_relaxed));
    _entry = entry;
}

HandlePin::~HandlePin()
{
    if (_entry == nullptr)
        return;
    const uint64_t before = _entry->state.fetch_sub(onePin, std::memory_order_acq_rel);
    if ((before & openBit) == 0 && (before & pinMask) == onePin)
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
    return (_entry->state.fetch_and(~openBit, std::memory_order_acq_rel) & openBit) != 0;
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
