// A hash index of one large list: finds the first leaf or the first list of a name.
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

// The key of a search: the first item with this name and kind.
struct scItemKey
{
    scItemKey(std::wstring_view wantedName, ItemKind wantedKind);
    scItemKey(const scProfText& itemName, ItemKind itemKind);
    explicit scItemKey(const clsItem& item);
    bool Matches(const clsItem& item) const;

    std::wstring_view name;
    std::uint32_t hash; // as stored in scProfText
    ItemKind kind;
};

// A hash table with open addressing, allocated in the job's arena. It has no destructor; its slots are released by the
// list or freed with the arena. It contains only the first item of each key. The index is optional: if too many names
// with the same hash collide, or memory runs out, it disables itself permanently and the list is searched linearly.
class clsListIndex
{
public:
    bool IsBuilt() const { return _slots != nullptr; }
    bool IsRefused() const { return _isRefused; }

    // Makes room for `count` items, which are then added in list order.
    void Start(clsProfArena& arena, std::size_t count) noexcept;
    // Adds the last item of the list. Does nothing if the index isn't built.
    void Add(clsProfArena& arena, clsItem& item) noexcept;
    void Drop(clsProfArena& arena) noexcept;
    // Removes a key, after which the list must not contain an item with it.
    void Remove(const scItemKey& key) noexcept;

    bool Has(const scItemKey& key) const { return Find(key) != nullptr; }
    clsItem* FindLeaf(const scItemKey& key) const { return static_cast<clsItem*>(Find(key)); }
    clsItemList* FindList(const scItemKey& key) const { return static_cast<clsItemList*>(Find(key)); }
    // Returns the leaf or list as the target of its links (see clsListLinks), or null.
    const void* FindTarget(const scItemKey& key) const { return Find(key); }

private:
    static constexpr std::uint32_t kLongestProbe = 64;
    static constexpr std::size_t kLargestCapacity = std::size_t{1} << 31;

    static constexpr std::uint32_t kListTag = 0x80000000u;

    struct Slot
    {
        std::uint32_t tag; // hash and kind
        void* target;      // a leaf, or a list itself (not its entry, to save a step); null: free
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
