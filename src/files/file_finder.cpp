#include "files/file_finder.h"

#include <wchar.h>

namespace qx
{

FileFinder::FileFinder(const String& pattern, bool directories) : _directories(directories)
{
    _find.Take(FindFirstFileW(pattern, &_data), true);
}

bool FileFinder::Next()
{
    if (!_find.IsValid())
        return false;
    if (_atFirst)
    {
        _atFirst = false;
        if (Fits())
            return true;
    }
    while (FindNextFileW(_find.Get(), &_data))
        if (Fits())
            return true;
    _find.Release();
    return false;
}

bool FileFinder::Fits() const
{
    const bool isDirectory = (_data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (isDirectory != _directories)
        return false;
    return !isDirectory || (wcscmp(_data.cFileName, L".") != 0 && wcscmp(_data.cFileName, L"..") != 0);
}

// Uses a search because it reports the link itself; other queries may follow the link.
bool IsLink(const String& path)
{
    WIN32_FIND_DATAW data;
    const clsFindDataObjectAutoRelease find(FindFirstFileW(path, &data), true);
    return find.IsValid() && (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

} // namespace qx
