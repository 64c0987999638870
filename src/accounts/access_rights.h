// Sets the rights of accounts on files and folders.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

// Sets the rights that an account has on a file or folder; `inheritance` says what a folder passes on. A leading ".\"
// of the account is ignored. Returns false and writes to the debug output on failure.
bool AddAccessRights(const String& path, const String& account, DWORD permissions, DWORD inheritance);

} // namespace qx
