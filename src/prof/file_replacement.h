// Saving a profile in one step: its file contains either the old or the new contents, whatever happens during the save.
#pragma once

#include "core/text/string.h"
#include "files/file.h"

namespace qx
{

class clsProfOutput;

// How an attempt ended to give a file new contents by putting another file in its place.
enum class FileReplacement
{
    Done,
    Impossible, // nothing was changed; the file has to be written in place
    Failed      // nothing was changed, and there is no room for the contents
};

// Writes the contents to a new file in the same folder, flushes it and moves it to the name of the target, which is
// open. `share` is how the new file is opened. If it becomes the target, `successor` receives it, opened and with its
// first byte locked since before it got the name.
//
// Impossible for streams, for files with several names, where the folder can't be written, and where the system can't
// replace an open file (Windows).
FileReplacement ReplaceFileOf(
    clsFile& target, const clsProfOutput& content, FileShare share, clsAutoRelease<clsFile*>& successor);

// Writes the contents to a new file of this name, which appears with all of its contents. Impossible if the name exists
// by now, or if no file can be created in its folder.
FileReplacement CreateFileOf(const String& name, const clsProfOutput& content);

// Returns true if the name leads to the open file. A file that was waited for may have been replaced in the meantime.
bool IsFileOfName(clsFile& file, const String& name);

} // namespace qx
