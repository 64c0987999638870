// Extracts whole archives.
#pragma once

#include "core/text/string.h"

#include <cstdint>
#include <functional>

namespace qx
{

enum class ExtractResult
{
    Done = 0,
    CannotOpen = -1,  // the archive is missing, can't be opened, or is a pipe or a device
    NotArchive = -2,  // not an archive, or its directory is damaged; members before the damage are extracted
    Incomplete = -3,  // some members were not extracted, all others were
    CannotWrite = -4, // a folder can't be created, or the disk is full; the members that follow were not extracted
    Stopped = -6      // by the progress function
};

// Receives each member that wasn't extracted, and why. The reason is a sentence that contains the name.
using ExtractProblem = std::function<void(const String& name, const String& reason)>;

// Receives the current member and the number of bytes extracted so far, of all members together. Returns false to stop.
using ExtractProgress = std::function<bool(const String& name, std::uint64_t done)>;

// Extracts the archive below a folder, which is created if it is missing and the archive has members.
//
// Existing files are replaced. On systems where files have modes, a file gets the permissions of its member, restricted
// by the process's umask, but never the bits that let it run as another user. Links are created last, unless
// `withLinks` is false; their targets must be inside the folder. On systems without modes, links are reported as
// problems.
//
// Nothing is written outside the folder: names that lead out of it and names that pass through a link are reported as
// problems, and folders are opened relative to the handles of their parents. A file that couldn't be extracted
// completely is removed.
ExtractResult ExtractArchive(const String& archive, const String& folder, bool withLinks, const ExtractProblem& report,
    const ExtractProgress& progress = {});

// Extracts the archive like ExtractArchive. Throws clsZIPException for the first problem.
void ExtractZip(const String& archive, const String& folder);

} // namespace qx
