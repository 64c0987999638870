#include "zip/folder_links.h"

#include "files/handle_holder.h"
#include "files/path_separator.h"

#include <windows.h>

#include <optional>

namespace qx
{
namespace
{

// Identifies a folder, regardless of the path by which it is reached.
struct FolderId
{
    DWORD volume;
    DWORD high;
    DWORD low;

    bool operator==(const FolderId&) const = default;
};

std::optional<FolderId> IdOf(const String& path)
{
    const clsGenericHandleObjectAutoRelease folder(
        CreateFileW(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
            OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr),
        true);
    BY_HANDLE_FILE_INFORMATION info;
    if (!folder.IsValid() || !GetFileInformationByHandle(folder.Get(), &info))
        return std::nullopt;
    return FolderId{info.dwVolumeSerialNumber, info.nFileIndexHigh, info.nFileIndexLow};
}

} // namespace

bool LeadsBack(const String& link, const String& folder)
{
    const std::optional<FolderId> target = IdOf(link);
    if (!target)
        return true; // a dangling link; there is nothing to follow
    if (IdOf(folder) == target)
        return true;
    for (std::size_t i = folder.Length(); i > 0; --i)
        if (IsPathSeparator(folder.CharAt(i - 1)) && IdOf(folder.Left(i)) == target)
            return true;
    return false;
}

} // namespace qx
