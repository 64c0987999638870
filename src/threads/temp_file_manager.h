// The temp file manager, of which each process has one.
#pragma once

namespace qx
{

// All functions are thread-safe.
void OpenTempFileManager();
void CloseTempFileManager();

// Without a manager, tries once to delete the file.
void AddTempFile(const wchar_t* name);

} // namespace qx
