// Opening a file relative to an open folder, with the sharing modes and attributes of CreateFileW.
#pragma once

#include "base/object.h"
#include "files/file_object.h"

#include <optional>
#include <string>

namespace qxplatform
{

// The arguments of CreateFileW, with specific rights, and the mode of a new file (default 0666).
struct RelativeOpen
{
    DWORD access = 0;
    DWORD share = 0;
    DWORD disposition = 0;
    DWORD flags = 0;
    std::optional<mode_t> mode;
};

// Opens the entry `name` of the folder itself, even if it is a link. `isNew` becomes true if the file was created.
// Returns the error.
DWORD OpenRelative(
    const Ref<FileObject>& folder, const std::string& name, const RelativeOpen& arguments, HANDLE& handle, bool& isNew);

} // namespace qxplatform
