// Temporary files. All of them stand in one folder of the library's own below the user's temp folder, and their names
// begin with the library's version between underscores: by that they are found when they are swept, and two versions on
// one machine leave each other's alone.
#pragma once

#include "core/text/string.h"
#include "files/file.h"
#include "files/handle_holder.h"

#include <cstdint>

namespace qx
{

constexpr wchar_t kTempSubfolder[] = L"trelmo";
// The number in the names.
constexpr int kTempNameVersion = 23;
// The one file in the folder that is no temporary one: see clsTempFileRemover.
constexpr wchar_t kActivityExtension[] = L".signal";

// The user's temp folder, with a separator at its end; as the system gives it, or with long names. Asked for once.
// Empty if there is none.
String GetTempFolder(bool longNames);

// The folder of the library's own below it, without a separator at its end.
String GetTempSubfolder();

// Whether that folder is another user's, as may be where users share a temp folder. Links may lie in it then: nothing
// is to be written there, nor swept.
bool IsTempSubfolderForeign();

// Makes a new file and gives its name, which is empty if none could be made.
//
// `subfolders` (separated by backslashes) are made below the temp folder; if that fails, or they are closed to this
// user, the file falls into the temp folder itself. Without a `holder` the file stays, empty, and keeps the name; with
// one it is open, and vanishes with the handle that the holder gets.
String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension, bool longNames,
    clsGenericHandleObjectAutoRelease* holder);

// The same with the numbers that make the names, for tests; the usual ones come from the processor's time stamp.
String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension, bool longNames,
    clsGenericHandleObjectAutoRelease* holder, std::uint64_t (*nextNumber)());

// A file in the temp folder that is there as long as the object. Not open if no file could be made.
class clsFileRWTemp : public clsFileRW
{
public:
    explicit clsFileRWTemp(const wchar_t* prefix = L"qvx", const wchar_t* extension = L"tmp");

protected:
    // It can't be opened again by name.
    HANDLE CreateHandle(const String&, DWORD, DWORD, DWORD, DWORD) override { return INVALID_HANDLE_VALUE; }
};

} // namespace qx
