// The one temp file manager of the process.
#pragma once

namespace qx
{

// Any thread may call these.
void OpenTempFileManager();
void CloseTempFileManager();

// Without a manager the file is tried once, now, and forgotten.
void AddTempFile(const wchar_t* name);

} // namespace qx
