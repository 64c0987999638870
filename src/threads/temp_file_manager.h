// The temp file manager, of which each process has one.
#pragma once

#include "threads/temp_file_remover.h"

namespace qx
{

// All functions are thread-safe.

// Creates the manager if there is none. `clock` is its source of time.
void OpenTempFileManager(const TempFileClock& clock = TempFileClock::OfSystem());
void CloseTempFileManager();

// Without a manager, tries once to delete the file.
void AddTempFile(const wchar_t* name);

} // namespace qx
