// Removal of temporary files: a single file by name, or the files that other processes left behind.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

enum class Removal
{
    Removed,
    Missing, // the file doesn't exist
    Failed
};

// Deletes a file, even if it is read-only. Failures are logged in developers' runs.
Removal RemoveFile(const String& name);

// Deletes the temporary files of this version that are in the folder of the activity file and were last modified more
// than an hour before `now`. The activity file itself is kept.
void SweepTempFiles(const String& activityFile, const FILETIME& now);

} // namespace qx
