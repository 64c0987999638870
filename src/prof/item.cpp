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
    AppendNode(&item._node);
    _index.Add(_job.Arena(), item);
}

void clsItemList::AppendAllOf(clsItemList& other)
{
    Node* node = nullptr;
    Node* const last = other.AbandonNodes();
    other._index.Drop(_job.Arena());
    for (Node* next = last != nullptr ? last->next : nullptr; node != last;)
    {
        node = next;
        next = node->next;
        AppendItem(*node->value);
    }
}

void clsItemList::RemoveAll()
{
    _index.Drop(_job.Arena());
    Clear();
}

void clsItemList::RemoveAll(std::wstring_view name, ItemKind kind)
{
    const scItemKey key(name, kind);
    if (_index.IsBuilt() && !_index.Has(key))
        return;
    if (RemoveIf([&](const clsItem* item) { return key.Matches(*item); }) != 0)
        ForgetIndex();
}

void clsItemList::RemoveItem(clsItem& item)
{
    if (Remove(&item))
        ForgetIndex();
}

void clsItemList::ReleaseNode(Node* node) noexcept
{
    _job.ReleaseItem(*node->value);
}

clsItem* clsItemList::Walk(const scItemKey& key)
{
    std::uint32_t visited = 0;
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

void clsItemList::NoteWalk(std::uint32_t visited)
{
    if (Count() <= kShortList || _index.IsRefused())
        return;
    _walked += visited;
    if (_walked < Count())
        return;

    _walked = 0;
    _index.Start(_job.Arena(), Count());
    for (clsItem* item : *this)
        _index.Add(_job.Arena(), *item);
}

void clsItemList::ForgetIndex() noexcept
{
    _index.Drop(_job.Arena());
    _walked = 0;
}

} // namespace qx
