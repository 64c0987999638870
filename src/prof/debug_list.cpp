#include "prof/debug_list.h"

#include "core/debug_line.h"
#include "prof/item.h"

#include <vector>

namespace qx
{

namespace
{

void WriteListLine(int level, const clsItemList& list)
{
    DebugLine(L"%*s[%s]\n", level, L"", list.Name().Text());
}

} // namespace

void WriteDebugList(const clsItemList& list)
{
    if (!UtilIsDebugActive())
        return;
    std::vector<WCValConstSListIter<clsItem*>> open{list.begin()};
    WriteListLine(0, list);
    while (!open.empty())
    {
        const auto level = static_cast<int>(open.size());
        auto& next = open.back();
        if (!next)
        {
            open.pop_back();
            continue;
        }
        const clsItem& item = **next++;
        if (const clsItemList* child = item.List())
        {
            WriteListLine(level, *child);
            open.push_back(child->begin());
        }
        else
            DebugLine(L"%*s%s=%s\n", level, L"", item.Name().Text(), item.ValueText());
    }
}

} // namespace qx
