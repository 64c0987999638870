// Files and streams inside a profile: a leaf holds one as packed text, and a set of files is a row of lists, each with
// the name and the contents of one.
#pragma once

#include "core/text/string.h"
#include "prof/item.h"
#include "prof/job.h"

#include <cstdint>

namespace qx
{

class clsFile;

// The packed text of what a source holds from its position on. Empty for nothing, for a source that can't be read, and
// for 4 GB and more, which packed text can't hold.
String PackRest(clsFile& source, const String& key);

// Makes the unpacked text of the first leaf of the path the whole content of the target, and rewinds it.
ProfError UnpackLeafByPath(clsItemList& start, const wchar_t* path, const String& key, clsFile& target);

// Appends an entry for each file that fits the pattern; gives the count of these, empty and unreadable ones included.
std::int32_t AppendFiles(clsItemList& list, const String& pattern, const String& key);

// Writes the files of the list's entries to the folder, which is made if there are entries and it is missing. Gives the
// count of files, or kProfWriteFailed without a folder.
//
// The names come from the profile, which may come from anywhere, so one that would lead out of the folder is refused:
// any with a separator or a colon (other folders, drives, streams of other files), a device's in whatever case, and one
// at which a link stands.
std::int32_t ExtractFiles(const clsItemList& list, const String& folder, const String& key);

} // namespace qx
