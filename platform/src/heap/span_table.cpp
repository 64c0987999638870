#include "heap/span.h"

namespace qxplatform::heap
{

bool SpanTable::Reserve(std::size_t units)
{
    const std::size_t capacity = _entries != nullptr ? _mask + 1 : 0;
    if ((_used + units) * 2 <= capacity)
        return true;
    const std::size_t newCapacity = capacity != 0 ? capacity * 2 : kFirstCapacity;
    auto* const entries = reinterpret_cast<Entry*>(MapPages(newCapacity * sizeof(Entry), false));
    if (entries == nullptr)
        return false;
    Entry* const former = _entries;
    _entries = entries;
    _mask = newCapacity - 1;
    _used = 0;
    for (std::size_t place = 0; place < capacity; ++place)
        if (former[place].span != nullptr)
            Insert(former[place].unit, former[place].span);
    if (former != nullptr)
        UnmapPages(former, capacity * sizeof(Entry), false);
    return true;
}

void SpanTable::Insert(std::uintptr_t unit, Span* span)
{
    std::size_t place = PlaceOf(unit);
    while (_entries[place].span != nullptr)
        place = (place + 1) & _mask;
    _entries[place] = {unit, span};
    ++_used;
}

// Moves later entries of the run into the gap, so that a look-up can stop at the first empty place.
void SpanTable::Remove(std::uintptr_t unit)
{
    std::size_t gap = PlaceOf(unit);
    while (_entries[gap].unit != unit)
        gap = (gap + 1) & _mask;
    for (std::size_t place = (gap + 1) & _mask; _entries[place].span != nullptr; place = (place + 1) & _mask)
    {
        const std::size_t distance = (place - PlaceOf(_entries[place].unit)) & _mask;
        if (distance < ((place - gap) & _mask))
            continue;
        _entries[gap] = _entries[place];
        gap = place;
    }
    _entries[gap] = {};
    --_used;
}

void SpanTable::FreeAll()
{
    if (_entries != nullptr)
        UnmapPages(_entries, (_mask + 1) * sizeof(Entry), false);
    _entries = nullptr;
    _mask = _used = 0;
}

} // namespace qxplatform::heap
