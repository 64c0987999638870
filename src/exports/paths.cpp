// File names.
#include <qxut23/paths.h>

#include "exports/guard.h"
#include "files/file_system_info.h"
#include "files/folder_tokens.h"

#include <stdlib.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

using namespace qx;

namespace
{

constexpr std::uint32_t kLongNameLength = 13; // more than an 8.3 name

// Returns the size for the C runtime, which requires 0 if there is no buffer.
std::size_t SizeOf(const QXWCHAR* buffer, std::size_t size)
{
    return buffer ? size : 0;
}

std::uint32_t FlagsOf(const FileSystemInfo& info)
{
    std::uint32_t flags = 0;
    flags |= info.caseSensitive ? QXUT_FS_CASE_SENSITIVE : 0;
    flags |= info.casePreserved ? QXUT_FS_CASE_PRESERVED : 0;
    flags |= info.unicode ? QXUT_FS_UNICODE : 0;
    flags |= info.maxNameLength >= kLongNameLength ? QXUT_FS_LONG_NAMES : 0;
    flags |= info.compressed ? QXUT_FS_COMPRESSED : 0;
    return flags;
}

} // namespace

static_assert(sizeof(QXUTFSINFO) == 20);

std::int32_t UtilSplitpath(
    const QXWCHAR* path, QXWCHAR* drive, QXWCHAR* directory, QXWCHAR* fileName, QXWCHAR* extension)
{
    for (QXWCHAR* part : {drive, directory, fileName, extension})
        if (part)
            *part = 0;
    if (!path)
        return EINVAL;
    return _wsplitpath_s(path, drive, SizeOf(drive, QXUT_PATH_DRIVE), directory, SizeOf(directory, QXUT_PATH_PART),
        fileName, SizeOf(fileName, QXUT_PATH_PART), extension, SizeOf(extension, QXUT_PATH_PART));
}

std::int32_t UtilMergepath(
    QXWCHAR* path, const QXWCHAR* drive, const QXWCHAR* directory, const QXWCHAR* fileName, const QXWCHAR* extension)
{
    return path ? _wmakepath_s(path, QXUT_PATH_LENGTH, drive, directory, fileName, extension) : EINVAL;
}

QXWCHAR* UtilFullpath(const QXWCHAR* path, QXWCHAR* buffer, std::size_t size)
{
    // Without a buffer, the C runtime would allocate one that the caller couldn't free.
    if (!buffer || size == 0)
        return nullptr;
    return Guarded(static_cast<QXWCHAR*>(nullptr), [=] { return _wfullpath(buffer, path, size); });
}

std::uint32_t UtilGetFSInfo(const QXWCHAR* root, QXUTFSINFO* info)
{
    if (!info || info->size != sizeof(QXUTFSINFO))
        return QXUT_FS_BAD_SIZE;
    const FileSystemInfo found = Guarded(FileSystemInfo{}, [=] { return GetFileSystemInfo(root); });
    info->maxPath = QXUT_PATH_LENGTH;
    info->driveLength = QXUT_PATH_DRIVE;
    info->maxNameLength = found.maxNameLength;
    info->flags = FlagsOf(found);
    return found.flags;
}

std::int32_t UtilExpandDefaultTokensOfFolderPath(const QXWCHAR* path, QXWCHAR** out)
{
    if (!path)
        return 0;
    return Guarded(0,
        [&]
        {
            const String expanded = ExpandFolderTokens(path);
            if (out)
                expanded.ToBSTR(out);
            return 1;
        });
}
