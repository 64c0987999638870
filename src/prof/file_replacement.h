// Saving a profile in one step: its file contains either the old or the new contents, whatever happens during the save.
#pragma once

#include "core/text/string.h"
#include "files/file.h"

namespace qx
{

class clsProfOutput;

// The outcome of an attempt to replace a file with a new one.
enum class FileReplacement
{
    Done,
    Impossible, // nothing was changed; the file has to be written in place
    Busy,       // nothing was changed, because another process is writing the same file or has removed the target
    Failed      // nothing was changed, and there is no room for the contents
};

// Writes the contents to a new file in the same folder, flushes it and moves it to the name of the target, which is
// open. `share` is the sharing mode of the new file. After the move, `successor` receives the new file, still open,
// with its first byte locked since before the move.
//
// Returns Busy if the open file has no name any more: its contents would be lost. Returns Impossible for streams, for
// files with several names, if the folder can't be written, and if the system can't replace an open file (Windows).
FileReplacement ReplaceFileOf(
    clsFile& target, const clsProfOutput& content, FileShare share, clsAutoRelease<clsFile*>& successor);

// Writes the contents to a new file of this name, which appears with all of its contents. Returns Busy if another
// process is creating it. Returns Impossible if a file of this name exists by then, or if no file can be created in its
// folder.
FileReplacement CreateFileOf(const String& name, const clsProfOutput& content);

// Returns the full path of an open file, with all links followed, or the empty text if the file has no name any more.
String FinalPathOf(clsFile& file);

// Returns true if the name leads to the open file. While a caller waited for the file, a save may have replaced it.
bool IsFileOfName(clsFile& file, const String& name);

} // namespace qx
