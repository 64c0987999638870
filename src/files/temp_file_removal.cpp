#include "files/temp_file_removal.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "files/file_finder.h"
#include "files/file_time.h"
#include "files/folder.h"
#include "files/handle_holder.h"
#include "files/paths.h"
#include "files/temp_files.h"

namespace qx
{
namespace
{

// Handles the last error after a failed removal. `format` takes the file name and the error text.
Removal Failed(const wchar_t* format, const String& name)
{
    const DWORD error = GetLastError();
    if (UtilIsDeveloperRun())
        DebugLine(format, name.Text(), String::SystemErrorText(error).Text());
    return error == ERROR_FILE_NOT_FOUND ? Removal::Missing : Removal::Failed;
}

// Compares with a precision of 1 ms.
bool IsBefore(const FILETIME& a, const FILETIME& b)
{
    return UnitsOf(a) / kUnitsPerMillisecond < UnitsOf(b) / kUnitsPerMillisecond;
}

// Clears the read-only attribute through a handle, so that a link that has replaced the file isn't followed.
bool MakeWritable(const String& name)
{
    const clsGenericHandleObjectAutoRelease file(CreateFileW(name, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                     OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr),
        true);
    BY_HANDLE_FILE_INFORMATION info{};
    return file.IsValid() && GetFileInformationByHandle(file.Get(), &info) &&
           ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ||
               ClearReadOnly(file.Get(), info.dwFileAttributes));
}

} // namespace

Removal RemoveFile(const String& name)
{
    const DWORD attributes = GetFileAttributesW(name);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return GetLastError() == ERROR_FILE_NOT_FOUND
                   ? Removal::Missing
                   : Failed(L"WRN: clsTempFileRemover: getting file attributes for '%s' failed: %s", name);
    // The attribute of a link is left alone, because changing it would change the link's target.
    if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT)) == FILE_ATTRIBUTE_READONLY &&
        !MakeWritable(name))
        return Failed(L"WRN: clsTempFileRemover: setting file '%s' r/w failed: %s", name);
    if (!DeleteFileW(name))
        return Failed(L"WRN: clsTempFileRemover: error deleting temp file '%s': %s", name);
    return Removal::Removed;
}

void SweepTempFiles(const String& activityFile, const FILETIME& now)
{
    const IString folder = GetPathDirectory(activityFile);
    const FILETIME limit = FileTimeOf(UnitsOf(now) - kUnitsPerHour);
    // The names are collected first, because deleting files during the listing may make the system skip entries.
    WCValSList<IString> names;
    for (FileFinder finder(String(String::kFormatted, L"%s_%d_*", folder.Text(), kTempNameVersion), false);
         finder.Next();)
        if (GetPathExtension(finder.Name()) != kActivityExtension && IsBefore(finder.Data().ftLastWriteTime, limit))
            names.Append(finder.Name());
    if (UtilIsDeveloperRun())
        DebugLine(
            L"deleting %d files from temp directory that are older than one hour", static_cast<int>(names.Count()));
    for (const IString& name : names)
        RemoveFile(folder + name);
}

} // namespace qx
