// Temporary files. They are created in a folder of the library's own below the user's temp folder. Their names begin
// with the library's version between underscores. The version is used to find them for sweeping, and keeps two versions
// on one machine from deleting each other's files.
#pragma once

#include "core/text/string.h"
#include "files/file.h"
#include "files/handle_holder.h"

#include <cstdint>

namespace qx
{

constexpr wchar_t kTempSubfolder[] = L"trelmo";
// The version number in the file names.
constexpr int kTempNameVersion = 23;
// The extension of the one file in the folder that isn't temporary: see clsTempFileRemover.
constexpr wchar_t kActivityExtension[] = L".signal";

// Returns the user's temp folder with a trailing separator, either as the system returns it or with long names. The
// value is determined once. Returns an empty text if there is no temp folder.
String GetTempFolder(bool longNames);

// Returns the library's own folder below the temp folder, without a trailing separator.
String GetTempSubfolder();

// Opens the activity file for writing, creating it if necessary. Like the temporary files it is for the user alone, and
// it is never opened through a link. Returns INVALID_HANDLE_VALUE and the last error on failure.
HANDLE OpenActivityFile(const String& name);

// Returns true if the library's folder belongs to another user, which is possible if users share a temp folder. It may
// contain malicious links then, so nothing must be written to it or swept in it.
bool IsTempSubfolderForeign();

// Creates a new file and returns its name, or an empty text on failure.
//
// `subfolders` (separated by backslashes) are created below the temp folder. If that fails, or this user has no access
// to them, the file is created in the temp folder itself. Without a `holder`, the file remains as an empty file. With a
// `holder`, the file stays open and is deleted when the handle is closed.
String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension,
    clsGenericHandleObjectAutoRelease* holder);

// The same with a number generator for the names, for tests. The default is the processor's time stamp counter.
String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension,
    clsGenericHandleObjectAutoRelease* holder, std::uint64_t (*nextNumber)());

// A temporary file that is deleted with the object. Not open if no file could be created.
class clsFileRWTemp : public clsFileRW
{
public:
    explicit clsFileRWTemp(const wchar_t* prefix = L"qvx", const wchar_t* extension = L"tmp");

protected:
    // The file can't be opened again by name.
    HANDLE CreateHandle(const String&, DWORD, DWORD, DWORD, DWORD) override { return INVALID_HANDLE_VALUE; }
};

} // namespace qx
