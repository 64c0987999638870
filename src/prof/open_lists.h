// The lists that a parser has opened but not yet closed.
#pragma once

#include "prof/job.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace qx
{

// A stack that replaces recursion, because the source determines the nesting depth. A list is inserted into its parent
// when it is closed. If an exception occurs, the open lists are released.
class clsOpenLists
{
public:
    clsOpenLists(clsProfJob& job, clsItemList& base) : _job(job), _base(base) {}
    clsOpenLists(const clsOpenLists&) = delete;
    clsOpenLists& operator=(const clsOpenLists&) = delete;
    ~clsOpenLists()
    {
        for (clsItem* entry : _entries)
            _job.ReleaseItem(*entry);
    }

    bool IsEmpty() const { return _entries.empty(); }
    clsItemList& Current() const { return _entries.empty() ? _base : *_entries.back()->List(); }

    void Open(std::wstring_view name)
    {
        clsItem& entry = _job.NewList(Current(), name);
        _entries.push_back(&entry);
    }

    void Close()
    {
        clsItem& entry = *_entries.back();
        _entries.pop_back();
        Current().AppendItem(entry);
    }

    void CloseAll()
    {
        while (!IsEmpty())
            Close();
    }

private:
    clsProfJob& _job;
    clsItemList& _base;
    std::vector<clsItem*> _entries;
};

} // namespace qx
