// The entries of a folder that fit a pattern, in the system's order.
#pragma once

#include "core/text/string.h"
#include "files/handle_holder.h"

#include <windows.h>

namespace qx
{

// Holds the handle of a search.
class clsFindDataObjectAutoRelease : public clsGenericHandleObjectAutoRelease
{
public:
    using clsGenericHandleObjectAutoRelease::clsGenericHandleObjectAutoRelease;
    void CloseHandle() override { FindClose(Get()); }
    ~clsFindDataObjectAutoRelease() override { Release(); }
};

//     for (FileFinder finder(pattern, false); finder.Next();)
//         ... finder.Name() ...
class FileFinder
{
public:
    // Either all that aren't folders, or the folders without "." and "..".
    FileFinder(const String& pattern, bool directories);

    // Goes to the next entry, at first to the first; false at the end.
    bool Next();

    const wchar_t* Name() const { return _data.cFileName; }
    const WIN32_FIND_DATAW& Data() const { return _data; }

private:
    bool Fits() const;

    WIN32_FIND_DATAW _data{};
    clsFindDataObjectAutoRelease _find;
    bool _directories;
    bool _atFirst = true;
};

// Also of a link that leads nowhere yet: what is written to that comes to be where it leads.
bool IsLink(const String& path);

} // namespace qx
