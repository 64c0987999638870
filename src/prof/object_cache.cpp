#include "prof/object_cache.h"

#include <algorithm>

namespace qx
{

namespace
{

// The characters that the text form replaces in a leaf's name.
bool NeedsEncoding(std::wstring_view name)
{
    return std::any_of(
        name.begin(), name.end(), [](wchar_t c) { return c < L' ' || c == L'=' || c == L'[' || c == L']'; });
}

} // namespace

scProfText* NewProfText(clsProfArena& arena, std::wstring_view text, uint64_t hash, bool isShared)
{
    auto* record = ::new (arena.Allocate(scProfText::Bytes(text.size()))) scProfText;
    record->length = static_cast<uint32_t>(text.size());
    record->hash = KeptHash(hash) & 0x3FFFFFFF;
    record->isShared = isShared;
    record->isPlain = !NeedsEncoding(text);

    auto* characters = reinterpret_cast<wchar_t*>(record + 1);
    memcpy(characters, text.data(), text.size() * sizeof(wchar_t));
    characters[text.size()] = 0;
    return record;
}

const scProfText* clsRefCountedObjectCache::Intern(std::wstring_view text, uint64_t hash)
{
    Bucket& bucket = _buckets[hash % kBuckets];
    if (bucket.count * 8 >= bucket.capacity * 5)
    {
        Grow(bucket);
    }
    Slot* slot = FindPlace(bucket, text, hash);
    if (slot == nullptr)
    {
        return nullptr;
    }
    if (slot->text == nullptr)
    {
        slot->text = NewProfText(_arena, text, hash, true);
        slot->hash = hash;
        ++bucket.count;
    }
    return slot->text;
}

size_t clsRefCountedObjectCache::Count() const
{
    size_t count = 0;
    for (const Bucket& bucket : _buckets)
    {
        count += bucket.count;
    }
    return count;
}

// The slot that holds the text, or a free one for it, or null.
clsRefCountedObjectCache::Slot* clsRefCountedObjectCache::FindPlace(
    const Bucket& bucket, std::wstring_view text, uint64_t hash)
{
    const uint32_t mask = bucket.capacity - 1;
    const uint32_t probes = std::min(bucket.capacity, kLongestProbe);
    uint32_t place = static_cast<uint32_t>(hash >> 8) & mask;
    for (uint32_t probe = 0; probe < probes; ++probe, place = (place + 1) & mask)
    {
        Slot& slot = bucket.slots[place];
        if (slot.text == nullptr || (slot.hash == hash && IsSameText(slot.text->View(), text)))
        {
            return &slot;
        }
    }
    return nullptr;
}

void clsRefCountedObjectCache::Grow(Bucket& bucket)
{
    const Bucket old = bucket;
    const uint32_t capacity = old.capacity == 0 ? kFirstCapacity : old.capacity * 2;
    auto* slots = static_cast<Slot*>(_arena.Allocate(capacity * sizeof(Slot)));
    std::uninitialized_fill_n(slots, capacity, Slot{});
    bucket = {slots, capacity, 0};

    for (uint32_t i = 0; i < old.capacity; ++i)
    {
        const Slot& slot = old.slots[i];
        if (slot.text == nullptr)
        {
            continue;
        }
        // A text without a place in the new table lives on, but isn't found any more.
        if (Slot* place = FindPlace(bucket, slot.text->View(), slot.hash); place != nullptr)
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
