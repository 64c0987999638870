// Name to first leaf and name to first list, for the look-ups in one large list.
#pragma once

#include "prof/text_record.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

class clsItem;
class clsItemList;

enum class ItemKind
{
    Leaf,
    List
};

// What a linear walk looks for: the first item of a kind with a name.
struct scItemKey
{
    scItemKey(std::wstring_view wantedName, ItemKind wantedKind);
    scItemKey(const scProfText& itemName, ItemKind itemKind);
    explicit scItemKey(const clsItem& item);
    bool Matches(const clsItem& item) const;

    std::wstring_view name;
    std::uint32_t hash; // as kept with a name
    ItemKind kind;
};

// Open addressing with the job's arena as memory; it has no destructor, its list or the arena gives the slots back.
// Only the first item of each key is in it. It can always be done without: when names with one hash crowd one stretch
// of the table too much, or there is no memory, it gives itself up for good, and its list is walked instead.
class clsListIndex
{
public:
    bool IsBuilt() const { return _slots != nullptr; }
    bool IsRefused() const { return _isRefused; }

    // Makes room for `count` items. The items are then added in the order of the list.
    void Start(clsProfArena& arena, std::size_t count) noexcept;
    // An item that is behind all others of the list. Does nothing while there's no index.
    void Add(clsProfArena& arena, clsItem& item) noexcept;
    void Drop(clsProfArena& arena) noexcept;

    bool Has(const scItemKey& key) const { return Find(key) != nullptr; }
    clsItem* FindLeaf(const scItemKey& key) const { return static_cast<clsItem*>(Find(key)); }
    clsItemList* FindList(const scItemKey& key) const { return static_cast<clsItemList*>(Find(key)); }

private:
    static constexpr std::uint32_t kLongestProbe = 64;
    static constexpr std::size_t kLargestCapacity = std::size_t{1} << 31;

    static constexpr std::uint32_t kListTag = 0x80000000u;

    struct Slot
    {
        std::uint32_t tag; // hash and kind
        void* target;      // the leaf, or the list itself, which spares the way over its entry; null: free
        bool IsList() const { return (tag & kListTag) != 0; }
        const scProfText& Name() const;
    };

    static std::uint32_t Tag(const scItemKey& key) { return key.hash | (key.kind == ItemKind::List ? kListTag : 0); }
    bool IsFull() const { return std::uint64_t{_used} * 3 >= std::uint64_t{_capacity} * 2; }
    bool IsSparse() const { return std::uint64_t{_used} * 8 < _capacity; }
    void* Find(const scItemKey& key) const;
    Slot* FindPlace(const scItemKey& key) const;
    void Enter(clsProfArena& arena, const scItemKey& key, void* target) noexcept;
    void Refuse(clsProfArena& arena) noexcept;
    void Grow(clsProfArena& arena) noexcept;

    Slot* _slots = nullptr;
    std::uint32_t _capacity = 0; // a power of two
    std::uint32_t _used = 0;
    bool _isRefused = false;
};

} // namespace qx
