#include "prof/path.h"

#include "core/text/string.h"
#include "prof/job.h"

#include <algorithm>
#include <vector>

namespace qx
{

bool clsProfPath::SkipLeadingSlash()
{
    if (*_begin != L'/')
        return false;
    Next();
    return true;
}

std::wstring_view clsProfPath::Component() const
{
    const auto length = static_cast<std::size_t>(_end - _begin);
    return {_begin, IsLast() ? length : std::min(length, kLongestComponent)};
}

namespace
{

clsItemList& StartOf(clsItemList& start, clsProfPath& path)
{
    return path.SkipLeadingSlash() ? start.Job().Root() : start;
}

clsItemList& AppendNewList(clsItemList& parent, std::wstring_view name)
{
    clsItem& item = parent.Job().NewList(parent, name);
    parent.AppendItem(item);
    return *item.List();
}

clsItemList& EnterOrMakeList(clsItemList& parent, std::wstring_view name)
{
    clsItemList* found = parent.FindList(name);
    return found != nullptr ? *found : AppendNewList(parent, name);
}

// Returns the list for the leaf of the path, creating missing lists. `path` is left at its last component.
clsItemList& MakeListsOfLeaf(clsItemList& start, clsProfPath& path)
{
    clsItemList* list = &StartOf(start, path);
    for (; !path.IsLast(); path.Next())
        list = &EnterOrMakeList(*list, path.Component());
    return *list;
}

} // namespace

clsItemList* FindListByPath(clsItemList& start, const wchar_t* text)
{
    if (text == nullptr)
        return &start;
    clsProfPath path(text);
    clsItemList* list = &StartOf(start, path);
    for (; list != nullptr && !path.IsLast(); path.Next())
        list = list->FindList(path.Component());
    if (list == nullptr)
        return nullptr;
    return path.Component() == L".." ? list->Parent() : list->FindList(path.Component());
}

clsItem* FindLeafByPath(clsItemList& start, const wchar_t* text)
{
    clsProfPath path(text);
    clsItemList* list = &StartOf(start, path);
    for (; list != nullptr && !path.IsLast(); path.Next())
        list = list->FindList(path.Component());
    return list != nullptr ? list->FindLeaf(path.Component()) : nullptr;
}

clsItemList& CreateListByPath(clsItemList& start, const wchar_t* text)
{
    clsProfPath path(text);
    clsItemList& parent = MakeListsOfLeaf(start, path);
    if (clsItemList* found = parent.FindList(path.Component()))
    {
        found->RemoveAll();
        return *found;
    }
    return AppendNewList(parent, path.Component());
}

clsItemList& AppendListByPath(clsItemList& start, const wchar_t* text)
{
    clsProfPath path(text);
    clsItemList* list = &StartOf(start, path);
    for (; !path.IsLast(); path.Next())
        list = &AppendNewList(*list, path.Component());
    return AppendNewList(*list, path.Component());
}

void SetLeafByPath(clsItemList& start, const wchar_t* text, std::wstring_view value)
{
    clsProfPath path(text);
    clsItemList& list = MakeListsOfLeaf(start, path);
    if (clsItem* leaf = list.FindLeaf(path.Component()))
        list.Job().SetValue(*leaf, value);
    else
        list.AppendItem(list.Job().NewLeaf(path.Component(), value));
}

void AppendLeafByPath(clsItemList& start, const wchar_t* text, std::wstring_view value)
{
    clsProfPath path(text);
    clsItemList& list = MakeListsOfLeaf(start, path);
    list.AppendItem(list.Job().NewLeaf(path.Component(), value));
}

// Uses a worklist instead of recursion. The path is copied first, because its text may belong to an item that is
// removed.
void RemoveByPath(clsItemList& start, const wchar_t* text, ItemKind kind)
{
    const String copy(text);
    if (copy.IsEmpty())
    {
        start.RemoveAll();
        return;
    }
    struct Step
    {
        clsItemList* list;
        clsProfPath path;
    };
    std::vector<Step> steps{{&start, clsProfPath(copy)}};
    while (!steps.empty())
    {
        const Step step = steps.back();
        steps.pop_back();
        if (step.path.IsLast())
        {
            step.list->RemoveAll(step.path.Component(), kind);
            continue;
        }
        clsProfPath rest = step.path;
        rest.Next();
        step.list->ForEachList(step.path.Component(), [&](clsItemList& list) { steps.push_back({&list, rest}); });
    }
}

void RemoveList(clsItemList& root, const clsItemList* wanted)
{
    std::vector<clsItemList*> lists{&root};
    while (!lists.empty())
    {
        clsItemList& list = *lists.back();
        lists.pop_back();
        for (clsItem* item : list)
        {
            if (item->List() == nullptr)
                continue;
            if (item->List() == wanted)
            {
                list.RemoveItem(*item);
                return;
            }
            lists.push_back(item->List());
        }
    }
}

} // namespace qx
