#include "files/new_file.h"

#include "files/handle_holder.h"
#include "files/posix_files.h"

namespace qx
{
namespace
{

constexpr DWORD kNewAccess = GENERIC_READ | GENERIC_WRITE | DELETE;
constexpr DWORD kNewFlags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;

// Limits the attempts, because another process may create the name again each time.
constexpr int kMostReplacements = 100;

HANDLE Replace(const clsFolder& folder, const String& name, bool replaceLink, std::optional<std::uint32_t> mode)
{
    for (int tries = 0; tries < kMostReplacements; ++tries)
    {
        const HANDLE file = folder.CreateNew(name, kNewAccess, 0, kNewFlags, mode);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS)
            return file;
        if (!replaceLink && folder.IsLink(name))
        {
            SetLastError(kErrorIsLink);
            return INVALID_HANDLE_VALUE;
        }
        if (!folder.Remove(name) && GetLastError() != ERROR_FILE_NOT_FOUND)
            return INVALID_HANDLE_VALUE;
    }
    return INVALID_HANDLE_VALUE;
}

} // namespace

clsNewFile::clsNewFile(const clsFolder& folder, const String& name, std::optional<std::uint32_t> mode)
{
    const HANDLE file = Replace(folder, name, false, mode);
    if (file == INVALID_HANDLE_VALUE)
        return;
    _file.emplace(file);
    if (SetDeletedOnClose(file, true))
        return;
    _becomesReadOnly = ClearReadOnly(file, FILE_ATTRIBUTE_NORMAL) && SetDeletedOnClose(file, true);
    if (_becomesReadOnly)
        return;
    const DWORD error = GetLastError();
    _file.reset();
    folder.Remove(name);
    SetLastError(error);
}

bool clsNewFile::SetWhole()
{
    const HANDLE file = _file->GetHandle();
    return (!_becomesReadOnly || SetReadOnly(file)) && SetDeletedOnClose(file, false);
}

bool CreateLink(const clsFolder& folder, const String& name, std::string_view target)
{
    const clsGenericHandleObjectAutoRelease file(Replace(folder, name, true, {}), true);
    if (!file.IsValid())
        return false;
    if (MakeLink(file.Get(), target))
        return true;
    const DWORD error = GetLastError();
    SetDeletedOnClose(file.Get(), true);
    SetLastError(error);
    return false;
}

} // namespace qx
