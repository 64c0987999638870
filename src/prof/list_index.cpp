#include "prof/list_index.h"

#include "core/text/text_hash.h"
#include "prof/item.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <new>

namespace qx
{

scItemKey::scItemKey(std::wstring_view wantedName, ItemKind wantedKind)
    : name(wantedName),
      hash(KeptHash(TextHash(wantedName))),
      kind(wantedKind)
{
}

scItemKey::scItemKey(const scProfText& itemName, ItemKind itemKind)
    : name(itemName.View()),
      hash(itemName.hash),
      kind(itemKind)
{
}

scItemKey::scItemKey(const clsItem& item) : scItemKey(item.Name(), item.Kind()) {}

bool scItemKey::Matches(const clsItem& item) const
{
    return item.Name().hash == hash && item.Kind() == kind && IsSameText(item.Name().View(), name);
}

void clsListIndex::Start(clsProfArena& arena, std::size_t count) noexcept
{
    const std::size_t capacity = std::bit_ceil(count + count / 2 + 2);
    _slots = nullptr;
    _used = 0;
    try
    {
        if (capacity <= kLargestCapacity)
            _slots = static_cast<Slot*>(arena.Allocate(capacity * sizeof(Slot)));
    }
    catch (const std::bad_alloc&)
    {
    }
    _capacity = IsBuilt() ? static_cast<std::uint32_t>(capacity) : 0;
    _isRefused = !IsBuilt();
    std::uninitialized_fill_n(_slots, _capacity, Slot{});
}

void clsListIndex::Add(clsProfArena& arena, clsItem& item) noexcept
{
    if (!IsBuilt())
        return;
    if (item.List() != nullptr)
        Enter(arena, scItemKey(item), item.List());
    else
        Enter(arena, scItemKey(item), &item);
}

// If the key exists, its first item is kept.
void clsListIndex::Enter(clsProfArena& arena, const scItemKey& key, void* target) noexcept
{
    if (IsFull())
        Grow(arena);
    while (IsBuilt())
    {
        if (Slot* slot = FindPlace(key))
        {
            if (slot->target == nullptr)
            {
                *slot = {Tag(key), target};
                ++_used;
            }
            return;
        }
        // The table is mostly empty, so a larger one wouldn't resolve this cluster of collisions.
        if (IsSparse())
            Refuse(arena);
        else
            Grow(arena);
    }
}

void clsListIndex::Drop(clsProfArena& arena) noexcept
{
    if (IsBuilt())
        arena.Release(_slots, _capacity * sizeof(Slot));
    _slots = nullptr;
    _capacity = 0;
    _used = 0;
}

// Moves later slots of the same run back, so that no search ends too early.
void clsListIndex::Remove(const scItemKey& key) noexcept
{
    const Slot* const removed = IsBuilt() ? FindPlace(key) : nullptr;
    if (removed == nullptr || removed->target == nullptr)
        return;
    const std::uint32_t mask = _capacity - 1;
    auto hole = static_cast<std::uint32_t>(removed - _slots);
    for (std::uint32_t place = (hole + 1) & mask; _slots[place].target != nullptr; place = (place + 1) & mask)
    {
        const std::uint32_t distance = (place - (_slots[place].tag & ~kListTag)) & mask;
        if (distance >= ((place - hole) & mask))
        {
            _slots[hole] = _slots[place];
            hole = place;
        }
    }
    _slots[hole] = {};
    --_used;
}

const scProfText& clsListIndex::Slot::Name() const
{
    return IsList() ? static_cast<const clsItemList*>(target)->Name() : static_cast<const clsItem*>(target)->Name();
}

void* clsListIndex::Find(const scItemKey& key) const
{
    // Every key of the list is within reach of a search, so a failed search means that there is no such item.
    const Slot* slot = FindPlace(key);
    return slot != nullptr ? slot->target : nullptr;
}

// Returns the slot of the key, or a free slot for it, or null if the search reaches its limit.
clsListIndex::Slot* clsListIndex::FindPlace(const scItemKey& key) const
{
    const std::uint32_t tag = Tag(key);
    const std::uint32_t mask = _capacity - 1;
    const std::uint32_t probes = std::min(_capacity, kLongestProbe);
    std::uint32_t place = key.hash & mask;
    for (std::uint32_t probe = 0; probe < probes; ++probe, place = (place + 1) & mask)
    {
        Slot& slot = _slots[place];
        if (slot.target == nullptr || (slot.tag == tag && IsSameText(slot.Name().View(), key.name)))
            return &slot;
    }
    return nullptr;
}

void clsListIndex::Refuse(clsProfArena& arena) noexcept
{
    Drop(arena);
    _isRefused = true;
}

void clsListIndex::Grow(clsProfArena& arena) noexcept
{
    const Slot* oldSlots = _slots;
    const std::uint32_t oldCapacity = _capacity;
    Start(arena, oldCapacity);
    for (std::uint32_t i = 0; i < oldCapacity && IsBuilt(); ++i)
    {
        const Slot& slot = oldSlots[i];
        if (slot.target != nullptr)
            Enter(arena, scItemKey(slot.Name(), slot.IsList() ? ItemKind::List : ItemKind::Leaf), slot.target);
    }
    arena.Release(const_cast<Slot*>(oldSlots), oldCapacity * sizeof(Slot));
}

} // namespace qx
