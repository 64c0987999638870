// The tree of a job: items and lists of items.
#pragma once

#include "containers/slist.h"
#include "prof/list_index.h"
#include "prof/list_links.h"
#include "prof/text_record.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

class clsItemList;
class clsProfJob;

// One node of the tree: a leaf with a value, or the entry of a list in its parent. A list may contain a leaf and a list
// entry of the same name. Items are allocated in the arena of their job, which also releases them.
class clsItem
{
public:
    explicit clsItem(const scProfText& name) : _name(&name) {}
    clsItem(const clsItem&) = delete;
    clsItem& operator=(const clsItem&) = delete;

    const scProfText& Name() const { return *_name; }
    // Returns an empty text for a list entry.
    const wchar_t* ValueText() const { return IsLeaf() ? _value : L""; }
    std::wstring_view Value() const { return {ValueText(), _valueLength}; }
    // Returns the list that this item is the entry of, or null for a leaf.
    clsItemList* List() const { return IsLeaf() ? nullptr : _list; }
    ItemKind Kind() const { return IsLeaf() ? ItemKind::Leaf : ItemKind::List; }

private:
    friend class clsItemList;
    friend class clsProfJob;

    static constexpr std::uint32_t kListEntry = UINT32_MAX;

    bool IsLeaf() const { return _valueRoom != kListEntry; }
    void BecomeEntryOf(clsItemList& list)
    {
        _list = &list;
        _valueRoom = kListEntry;
    }

    // Kept small, because items take up most of a tree's memory.
    WCSListNode<clsItem*> _node{nullptr, this}; // links the item into its list
    const scProfText* _name;
    // The value of a leaf is zero-terminated and is stored in one of three places. If `_valueRoom` is 0, it is in the
    // job's value table or in the source image, both of which live as long as the job. Otherwise it is in a block owned
    // by the item; `_valueRoom` is the block's size in characters, including the terminator. A list entry stores its
    // list here instead.
    union
    {
        const wchar_t* _value = L"";
        clsItemList* _list;
    };
    std::uint32_t _valueLength = 0;
    std::uint32_t _valueRoom = 0;
};

static_assert(sizeof(clsItem) == 40);

// The items of a list, in insertion order. Names may repeat. The list nodes are embedded in the items, so that
// iteration touches one record for each item. Short lists are searched linearly. A longer list gets an index once its
// searches have visited as many items as building the index takes.
class clsItemList : public WCValSList<clsItem*>
{
public:
    clsItemList(clsProfJob& job, clsItemList* parent, const scProfText& name) : _job(job), _parent(parent), _name(&name)
    {
    }
    clsItemList(const clsItemList&) = delete;
    clsItemList& operator=(const clsItemList&) = delete;
    // The nodes belong to the job's arena and are freed with it. If a list is destroyed earlier, the job empties it
    // first.
    ~clsItemList() override { AbandonNodes(); }

    const scProfText& Name() const { return *_name; }
    clsProfJob& Job() const { return _job; }
    // Returns the enclosing list, or null for the root.
    clsItemList* Parent() const { return _parent; }

    // Return the first leaf or list with the given name, or null.
    clsItem* FindLeaf(std::wstring_view name);
    clsItemList* FindList(std::wstring_view name);

    // Calls visitor(clsItemList&) for each list with the given name, in any order.
    template <class Visitor>
    void ForEachList(std::wstring_view name, Visitor visitor);

    // Appends an item that isn't in any list.
    void AppendItem(clsItem& item);
    // Moves all items of another list of the same job to the end of this list.
    void AppendAllOf(clsItemList& other);

    void RemoveAll();
    void RemoveAll(std::wstring_view name, ItemKind kind);
    void RemoveItem(clsItem& item);

protected:
    // Vtable order: destructor, ReleaseNode, AreEqual (pointers).
    void ReleaseNode(Node* node) noexcept override;

private:
    friend class clsProfJob;

    static constexpr std::size_t kShortList = 8;

    static const void* TargetOf(const clsItem& item)
    {
        return item.List() != nullptr ? static_cast<const void*>(item.List()) : &item;
    }

    clsItem* Walk(const scItemKey& key);
    void NoteWalk(std::size_t visited);
    bool FindAll(const scItemKey& key, const void*& first);
    void BuildLinks();
    void RemoveLinked(const void* first);
    void ForgetIndex() noexcept;

    clsProfJob& _job;
    clsItemList* _parent;
    const scProfText* _name;
    clsListIndex _index;
    clsListLinks _links;       // only while the index is built
    std::size_t _walked = 0; // items visited by searches since the index, or else the list, was last rebuilt
};

template <class Visitor>
void clsItemList::ForEachList(std::wstring_view name, Visitor visitor)
{
    const scItemKey key(name, ItemKind::List);
    const void* first = nullptr;
    if (FindAll(key, first))
    {
        const void* target = first;
        while (target != nullptr)
        {
            visitor(*static_cast<clsItemList*>(const_cast<void*>(target)));
            target = _links.LinkOf(target).next;
            if (target == first)
                return;
        }
        return;
    }
    for (clsItem* item : *this)
    {
        if (key.Matches(*item))
            visitor(*item->List());
    }
    NoteWalk(Count());
}

} // namespace qx
