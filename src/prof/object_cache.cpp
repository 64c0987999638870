#include "prof/object_cache.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

namespace
{

constexpr std::uint32_t kHashMask = (std::uint32_t{1} << scProfText::kHashBits) - 1;

// Tests for the characters that the text form encodes in the name of a leaf.
bool NeedsEncoding(std::wstring_view name)
{
    return std::any_of(
        name.begin(), name.end(), [](wchar_t c) { return c < L' ' || c == L'=' || c == L'[' || c == L']'; });
}

} // namespace

scProfText* NewProfText(clsProfArena& arena, std::wstring_view text, std::uint64_t hash, bool isShared)
{
    auto* record = ::new (arena.Allocate(scProfText::Bytes(text.size()))) scProfText;
    record->length = static_cast<std::uint32_t>(text.size());
    record->hash = KeptHash(hash) & kHashMask;
    record->isShared = isShared;
    record->isPlain = !NeedsEncoding(text);

    auto* characters = reinterpret_cast<wchar_t*>(record + 1);
    *std::copy(text.begin(), text.end(), characters) = 0;
    return record;
}

const scProfText* clsRefCountedObjectCache::Intern(std::wstring_view text, std::uint64_t hash)
{
    Bucket& bucket = _buckets[hash % kBuckets];
    if (bucket.count * 8 >= bucket.capacity * 5)
    {
        Grow(bucket);
    }
    Slot* slot = FindPlace(bucket, text, KeptHash(hash));
    if (slot == nullptr)
    {
        return nullptr;
    }
    if (slot->IsFree())
    {
        const scProfText* made = NewProfText(_arena, text, hash, true);
        bucket.count += slot->Take(made);
        return made;
    }
    return slot->Text();
}

std::size_t clsRefCountedObjectCache::Count() const
{
    std::size_t count = 0;
    for (const Bucket& bucket : _buckets)
    {
        count += bucket.count;
    }
    return count;
}

// Returns the slot with the text, or a free slot for it, or null if the search reaches its limit.
clsRefCountedObjectCache::Slot* clsRefCountedObjectCache::FindPlace(
    const Bucket& bucket, std::wstring_view text, std::uint32_t hash)
{
    const std::uint32_t mask = bucket.capacity - 1;
    const std::uint32_t probes = std::min(bucket.capacity, kLongestProbe);
    std::uint32_t place = hash & mask;
    for (std::uint32_t probe = 0; probe < probes; ++probe, place = (place + 1) & mask)
    {
        Slot& slot = bucket.slots[place];
        if (slot.IsFree() || (slot.MayHold(hash) && IsSameText(slot.Text()->View(), text)))
        {
            return &slot;
        }
    }
    return nullptr;
}

void clsRefCountedObjectCache::Grow(Bucket& bucket)
{
    const Bucket old = bucket;
    const std::uint32_t capacity = old.capacity == 0 ? kFirstCapacity : old.capacity * 2;
    auto* slots = static_cast<Slot*>(_arena.Allocate(capacity * sizeof(Slot)));
    std::uninitialized_fill_n(slots, capacity, Slot{});
    bucket = {slots, capacity, 0};

    for (std::uint32_t i = 0; i < old.capacity; ++i)
    {
        const Slot& slot = old.slots[i];
        if (slot.IsFree())
        {
            continue;
        }
        // A text that finds no slot in the new table stays alive but can't be found any more.
        const scProfText* text = slot.Text();
        if (Slot* place = FindPlace(bucket, text->View(), text->hash); place != nullptr)
        {
            *place = slot;
            ++bucket.count;
        }
    }
    if (old.capacity != 0)
    {
        _arena.Release(old.slots, old.capacity * sizeof(Slot));
    }
}

} // namespace qx
