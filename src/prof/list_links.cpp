#include "prof/list_links.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

namespace qx
{

namespace
{

constexpr std::size_t kMostLinks = std::size_t{1} << 31;

} // namespace

void clsListLinks::Start(clsProfArena& arena, std::size_t count) noexcept
{
    const std::size_t capacity = std::bit_ceil(count + count / 2 + 2);
    _links = nullptr;
    _capacity = 0;
    _used = 0;
    try
    {
        if (capacity > kMostLinks)
            return;
        _links = static_cast<Link*>(arena.Allocate(capacity * sizeof(Link)));
    }
    catch (const std::bad_alloc&)
    {
        return;
    }
    _capacity = static_cast<std::uint32_t>(capacity);
    std::uninitialized_fill_n(_links, _capacity, Link{});
}

void clsListLinks::Add(clsProfArena& arena, const void* target, Node* before, const void* first) noexcept
{
    if (std::uint64_t{_used} * 3 >= std::uint64_t{_capacity} * 2)
        Grow(arena);
    if (!IsBuilt())
        return;
    Link& link = *FindPlace(target);
    link = {target, before, target};
    ++_used;
    if (first != target)
    {
        Link& firstLink = LinkOf(first);
        link.next = firstLink.next;
        firstLink.next = target;
    }
}

// Moves later links of the same run back, so that no search ends too early.
void clsListLinks::Remove(const void* target)
{
    const std::size_t mask = _capacity - 1;
    auto hole = static_cast<std::size_t>(FindPlace(target) - _links);
    for (std::size_t place = (hole + 1) & mask; _links[place].target != nullptr; place = (place + 1) & mask)
    {
        const std::size_t distance = (place - Home(_links[place].target)) & mask;
        if (distance >= ((place - hole) & mask))
        {
            _links[hole] = _links[place];
            hole = place;
        }
    }
    _links[hole] = {};
    --_used;
}

void clsListLinks::Drop(clsProfArena& arena) noexcept
{
    if (IsBuilt())
        arena.Release(_links, _capacity * sizeof(Link));
    _links = nullptr;
    _capacity = 0;
    _used = 0;
}

// Records of the arena are aligned to 8 bytes. The multiplier is 2^64 divided by the golden ratio.
std::size_t clsListLinks::Home(const void* target) const
{
    const std::uint64_t number = reinterpret_cast<std::uintptr_t>(target) >> 3;
    return (number * 0x9E3779B97F4A7C15ull >> 32) & (_capacity - 1);
}

// Returns the target's link, or the free place for it.
clsListLinks::Link* clsListLinks::FindPlace(const void* target) const
{
    const std::size_t mask = _capacity - 1;
    std::size_t place = Home(target);
    while (_links[place].target != target && _links[place].target != nullptr)
        place = (place + 1) & mask;
    return &_links[place];
}

void clsListLinks::Grow(clsProfArena& arena) noexcept
{
    Link* const old = _links;
    const std::uint32_t oldCapacity = _capacity;
    const std::uint32_t used = _used;
    Start(arena, oldCapacity);
    if (IsBuilt())
    {
        std::for_each(old, old + oldCapacity,
            [this](const Link& link)
            {
                if (link.target != nullptr)
                    *FindPlace(link.target) = link;
            });
        _used = used;
    }
    arena.Release(old, oldCapacity * sizeof(Link));
}

} // namespace qx
