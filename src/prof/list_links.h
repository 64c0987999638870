// Stores the predecessor of each item of a large list, and links the items with the same name.
#pragma once

#include "containers/slist.h"
#include "prof/arena.h"

#include <cstddef>
#include <cstdint>

namespace qx
{

class clsItem;

// Makes removing an item as cheap as finding it: a singly linked list doesn't store predecessors, and the index of a
// list contains only the first item of each key. A hash table with open addressing, allocated in the job's arena; like
// the index it has no destructor and is optional: if memory runs out, it is dropped and items are removed by a walk.
// A list builds it only when items are removed repeatedly.
class clsListLinks
{
public:
    using Node = WCSListNode<clsItem*>;

    struct Link
    {
        const void* target; // a leaf, or the list of an entry, as in the index; null: free
        Node* before;       // the node before the item; for the first item, the last node of the ring
        const void* next;   // the targets with the same key form a ring
    };

    bool IsBuilt() const { return _links != nullptr; }

    // Makes room for `count` targets.
    void Start(clsProfArena& arena, std::size_t count) noexcept;
    // Adds a target after the node `before`. `first` is the first target with the same key, possibly `target` itself.
    void Add(clsProfArena& arena, const void* target, Node* before, const void* first) noexcept;
    void Remove(const void* target);
    void Drop(clsProfArena& arena) noexcept;

    // Returns the link of a target that was added.
    Link& LinkOf(const void* target) const { return *FindPlace(target); }

private:
    std::size_t Home(const void* target) const;
    Link* FindPlace(const void* target) const;
    void Grow(clsProfArena& arena) noexcept;

    Link* _links = nullptr;
    std::uint32_t _capacity = 0; // a power of two
    std::uint32_t _used = 0;
};

} // namespace qx
