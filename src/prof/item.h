// The tree of a job: items and the lists that hold them.
#pragma once

#include "containers/slist.h"
#include "prof/list_index.h"
#include "prof/text_record.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

class clsItemList;
class clsProfJob;

// One node of the tree: a leaf with a value, or the entry of a list. A list entry and a leaf of one list may have the
// same name. Items live in the arena of their job, which makes and releases them.
class clsItem
{
public:
    explicit clsItem(const scProfText& name) : _name(&name) {}
    clsItem(const clsItem&) = delete;
    clsItem& operator=(const clsItem&) = delete;

    const scProfText& Name() const { return *_name; }
    // A list entry has the empty value.
    const wchar_t* ValueText() const { return IsLeaf() ? _value : L""; }
    std::wstring_view Value() const { return {ValueText(), _valueLength}; }
    // The list that the item is the entry of, null for a leaf.
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

    // Kept small: most of what a tree takes are its items.
    WCSListNode<clsItem*> _node{nullptr, this}; // its place in the ring of the list that holds it
    const scProfText* _name;
    // The value is zero-terminated and lies in one of three places: the job's value table or the source image, where it
    // stays as long as the job, or (with room, counted with the terminator) in a block that is the item's own. The
    // entry of a list has that in its place.
    union
    {
        const wchar_t* _value = L"";
        clsItemList* _list;
    };
    std::uint32_t _valueLength = 0;
    std::uint32_t _valueRoom = 0;
};

static_assert(sizeof(clsItem) == 40);

// The items of one list in the order of their making; names may repeat. Its items bring their own nodes, so that a walk
// touches one record an item. Small lists are walked; a list that has been walked for longer than an index takes to
// build gets one.
class clsItemList : public WCValSList<clsItem*>
{
public:
    clsItemList(clsProfJob& job, clsItemList* parent, const scProfText& name) : _job(job), _parent(parent), _name(&name)
    {
    }
    clsItemList(const clsItemList&) = delete;
    clsItemList& operator=(const clsItemList&) = delete;
    // The nodes belong to the job's arena, which goes in one piece; lists that go earlier are emptied by the job.
    ~clsItemList() override { AbandonNodes(); }

    const scProfText& Name() const { return *_name; }
    clsProfJob& Job() const { return _job; }
    // The enclosing list, null for the root.
    clsItemList* Parent() const { return _parent; }

    // The first leaf or list entry of a name, or null.
    clsItem* FindLeaf(std::wstring_view name);
    clsItemList* FindList(std::wstring_view name);

    // Takes an item that is in no list yet as its last one.
    void AppendItem(clsItem& item);
    // Takes all items of another list of the same job, which is left empty.
    void AppendAllOf(clsItemList& other);

    void RemoveAll();
    void RemoveAll(std::wstring_view name, ItemKind kind);
    void RemoveItem(clsItem& item);

protected:
    // Slot order of the virtual operations: destructor, ReleaseNode, AreEqual (pointers).
    void ReleaseNode(Node* node) noexcept override;

private:
    friend class clsProfJob;

    static constexpr std::size_t kShortList = 8;

    clsItem* Walk(const scItemKey& key);
    void NoteWalk(std::uint32_t visited);
    void ForgetIndex() noexcept;

    clsProfJob& _job;
    clsItemList* _parent;
    const scProfText* _name;
    clsListIndex _index;
    std::uint32_t _walked = 0; // items visited by walks since the list last had an index
};

} // namespace qx
