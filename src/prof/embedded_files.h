// Files and streams stored in a profile. A leaf holds the contents as packed text. A set of files is a sequence of
// lists, one for each file, with its name and contents.
#pragma once

#include "core/text/string.h"
#include "prof/item.h"
#include "prof/job.h"

#include <cstdint>
#include <functional>

namespace qx
{

class clsFile;

// Returns the contents of `source` from its current position on as packed text. Returns an empty text if nothing is
// left, if the source can't be read, or if 4 GB or more are left, which exceeds the limit of packed text.
String PackRest(clsFile& source, const String& key);

// Unpacks the first leaf of the path, replaces the contents of `target` with the result, and rewinds `target`.
ProfError UnpackLeafByPath(clsItemList& start, const wchar_t* path, const String& key, clsFile& target);

// Appends an entry for each file that matches the pattern. Returns the number of matching files, including empty and
// unreadable files, for which no entry is made.
std::int32_t AppendFiles(clsItemList& list, const String& pattern, const String& key);

// Why an entry was not extracted.
enum class EntryProblem
{
    NoName,
    NameRefused,
    NoContents,
    WrongKey,
    Damaged,
    CannotWrite
};

// Receives the name of the entry and a description that can follow it.
using ReportEntry = std::function<void(const String& name, EntryProblem problem, const wchar_t* description)>;

// How the contents of entries are unpacked.
enum class Unpacking
{
    Lenient, // see UnpackFromString
    Strict   // see UnpackStrictly: a wrong key extracts nothing
};

// Extracts the files of the list's entries into `folder`, creating it if necessary; without entries no folder is
// created. Returns the number of extracted files, or kProfWriteFailed if the folder can't be created.
//
// The profile may come from an untrusted source. Names that could lead out of the folder are therefore refused: names
// with a separator or colon (other folders, drives, alternate streams), device names in upper or lower case, and names
// of existing links.
std::int32_t ExtractFiles(const clsItemList& list, const String& folder, const String& key,
    Unpacking unpacking = Unpacking::Lenient, const ReportEntry& report = {});

} // namespace qx
