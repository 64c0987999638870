#include "files/target_folder.h"

#include "files/path_separator.h"

#include <windows.h>

namespace qx
{

clsTargetFolder::clsTargetFolder(const String& path)
{
    if (path.IsEmpty())
    {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return;
    }
    std::wstring_view rest = path.View();
    while (EndsInPathSeparator(rest))
        rest.remove_suffix(1);
    const std::size_t nameAt = rest.find_last_of(L"/\\:") + 1; // 0 without a separator
    _name = String(rest.substr(nameAt));
    // Roots, drives and shares have no parent. They can't be replaced with a link either, so opening them by path is
    // safe.
    if (clsFolder::IsSingleName(_name.View()))
        _parent = clsFolder(String(path.View().substr(0, nameAt)));
    if (_parent.IsOpen())
        _folder.OpenSubfolder(_parent, _name);
    else
        _folder = clsFolder(path);
    if (!IsOpen() && GetLastError() == kErrorIsLink)
        _folder = clsFolder(path);
}

void clsTargetFolder::Restore()
{
    if (_parent.IsOpen() && !_parent.Contains(_name))
        _folder.OpenSubfolder(_parent, _name);
}

} // namespace qx
