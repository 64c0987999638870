// Iterates over the entries of a folder that match a pattern, in the system's order.
#pragma once

#include "core/text/string.h"
#include "files/handle_holder.h"

#include <windows.h>

namespace qx
{

// Owns the handle of a search.
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
    // Finds either everything except folders, or only the folders, without "." and "..".
    FileFinder(const String& pattern, bool directories);

    // Moves to the next entry; the first call moves to the first entry. Returns false at the end.
    bool Next();

    // Returns the error of a search that couldn't begin; ERROR_FILE_NOT_FOUND if nothing matches.
    DWORD Error() const { return _error; }

    const wchar_t* Name() const { return _data.cFileName; }
    const WIN32_FIND_DATAW& Data() const { return _data; }

private:
    bool Fits() const;

    WIN32_FIND_DATAW _data{};
    clsFindDataObjectAutoRelease _find;
    DWORD _error = ERROR_SUCCESS;
    bool _directories;
    bool _atFirst = true;
};

// Returns true if the path is a link, including a dangling one. Writing to a dangling link would create a file at its
// target.
bool IsLink(const String& path);

} // namespace qx
