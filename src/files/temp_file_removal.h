// Getting rid of temporary files: one by name, and those that others left behind.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

enum class Removal
{
    Removed,
    Missing, // there is no such file any more
    Failed
};

// Deletes a file, even a read-only one. What fails is logged in developers' runs.
Removal RemoveFile(const String& name);

// Deletes this version's temporary files that stand in the folder of the activity file and were last written to more
// than an hour before `now`. The activity file itself stays.
void SweepTempFiles(const String& activityFile, const FILETIME& now);

} // namespace qx
