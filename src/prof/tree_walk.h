// The traversal that the writers use.
#pragma once

#include "prof/item.h"

#include <cstdint>
#include <vector>

namespace qx
{

// Visits everything below `root` in order, without recursion. Calls on the visitor:
//     Leaf(item, level)
//     Begin(list, level), End(level): before and after the items of a list, which are one level deeper
template <class Visitor>
void WalkTree(const clsItemList& root, std::uint32_t level, Visitor& visitor)
{
    std::vector<WCValConstSListIter<clsItem*>> open{root.begin()};
    while (!open.empty())
    {
        auto& next = open.back();
        if (!next)
        {
            open.pop_back();
            if (!open.empty())
                visitor.End(--level);
            continue;
        }
        const clsItem& item = **next++;
        if (item.List() == nullptr)
        {
            visitor.Leaf(item, level);
            continue;
        }
        visitor.Begin(*item.List(), level++);
        open.push_back(item.List()->begin());
    }
}

} // namespace qx
