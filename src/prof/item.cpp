#include "prof/item.h"

#include "prof/job.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

clsItem* clsItemList::FindLeaf(std::wstring_view name)
{
    const scItemKey key(name, ItemKind::Leaf);
    return _index.IsBuilt() ? _index.FindLeaf(key) : Walk(key);
}

clsItemList* clsItemList::FindList(std::wstring_view name)
{
    const scItemKey key(name, ItemKind::List);
    if (_index.IsBuilt())
        return _index.FindList(key);
    const clsItem* entry = Walk(key);
    return entry != nullptr ? entry->List() : nullptr;
}

void clsItemList::AppendItem(clsItem& item)
{
    Node* const last = LastNode();
    AppendNode(&item._node);
    _index.Add(_job.Arena(), item);
    if (!_links.IsBuilt())
        return;
    // Without the index, the links can't be kept up.
    const void* const first = _index.IsBuilt() ? _index.FindTarget(scItemKey(item)) : nullptr;
    if (first == nullptr)
    {
        _links.Drop(_job.Arena());
        return;
    }
    _links.Add(_job.Arena(), TargetOf(item), last != nullptr ? last : &item._node, first);
    if (_links.IsBuilt())
        _links.LinkOf(TargetOf(*item._node.next->value)).before = &item._node;
}

void clsItemList::AppendAllOf(clsItemList& other)
{
    Node* node = nullptr;
    Node* const last = other.AbandonNodes();
    other.ForgetIndex();
    for (Node* next = last != nullptr ? last->next : nullptr; node != last;)
    {
        node = next;
        next = node->next;
        AppendItem(*node->value);
    }
}

void clsItemList::RemoveAll()
{
    ForgetIndex();
    Clear();
}

void clsItemList::RemoveAll(std::wstring_view name, ItemKind kind)
{
    const scItemKey key(name, kind);
    const void* first = nullptr;
    if (FindAll(key, first))
    {
        _index.Remove(key);
        if (first != nullptr)
            RemoveLinked(first);
        return;
    }
    const std::size_t visited = Count();
    _index.Remove(key);
    RemoveIf([&](const clsItem* item) { return key.Matches(*item); });
    NoteWalk(visited);
}

void clsItemList::RemoveItem(clsItem& item)
{
    if (Remove(&item))
        ForgetIndex();
}

// Finds all items of a key without a walk: returns true and the first target of their ring, or null if there is no
// such item. Returns false if the list must be walked.
bool clsItemList::FindAll(const scItemKey& key, const void*& first)
{
    if (!_index.IsBuilt())
        return false;
    first = _index.FindTarget(key);
    if (first == nullptr)
        return true;
    if (!_links.IsBuilt() && Count() > kShortList && _walked >= Count())
        BuildLinks();
    return _links.IsBuilt();
}

void clsItemList::BuildLinks()
{
    clsProfArena& arena = _job.Arena();
    _walked = 0;
    _links.Start(arena, Count());
    Node* before = LastNode();
    for (clsItem* item : *this)
    {
        if (_links.IsBuilt())
            _links.Add(arena, TargetOf(*item), before, _index.FindTarget(scItemKey(*item)));
        before = &item->_node;
    }
}

void clsItemList::RemoveLinked(const void* first)
{
    const void* target = first;
    do
    {
        const clsListLinks::Link link = _links.LinkOf(target);
        _links.Remove(target);
        Node* const node = Unlink(link.before);
        if (!IsEmpty())
            _links.LinkOf(TargetOf(*link.before->next->value)).before = link.before;
        ReleaseNode(node);
        target = link.next;
    } while (target != first);
}

void clsItemList::ReleaseNode(Node* node) noexcept
{
    _job.ReleaseItem(*node->value);
}

clsItem* clsItemList::Walk(const scItemKey& key)
{
    std::size_t visited = 0;
    clsItem* found = nullptr;
    for (clsItem* item : *this)
    {
        ++visited;
        if (key.Matches(*item))
        {
            found = item;
            break;
        }
    }
    NoteWalk(visited);
    return found;
}

// Builds the index once walks have visited as many items as that takes. With an index, the walks are removals, and the
// next one builds the links.
void clsItemList::NoteWalk(std::size_t visited)
{
    if (Count() <= kShortList || _index.IsRefused())
        return;
    _walked += visited;
    if (_index.IsBuilt() || _walked < Count())
        return;

    _walked = 0;
    _index.Start(_job.Arena(), Count());
    for (clsItem* item : *this)
        _index.Add(_job.Arena(), *item);
}

void clsItemList::ForgetIndex() noexcept
{
    _index.Drop(_job.Arena());
    _links.Drop(_job.Arena());
    _walked = 0;
}

} // namespace qx
