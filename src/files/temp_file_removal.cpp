#include "files/temp_file_removal.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "files/file_finder.h"
#include "files/file_time.h"
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

} // namespace

Removal RemoveFile(const String& name)
{
    const DWORD attributes = GetFileAttributesW(name);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return GetLastError() == ERROR_FILE_NOT_FOUND
                   ? Removal::Missing
                   : Failed(L"WRN: clsTempFileRemover: getting file attributes for '%s' failed: %s", name);
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
        !SetFileAttributesW(name, attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)))
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
