// Sharing modes across all opened files of all processes that use the layer.
//
// Every opened file holds one lock near 2^62, far beyond any data, whose position encodes how the file was opened: the
// relevant rights (reading, writing, deleting) and the sharing mode select one of 64 slots. Each open checks whether a
// lock exists in a slot that excludes it. The kernel releases the lock with the descriptor, so a process that dies
// leaves nothing behind. Programs that don't use the layer neither see these locks nor are blocked by them.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

// How a file is opened, in the bits of FILE_SHARE_READ, FILE_SHARE_WRITE and FILE_SHARE_DELETE.
struct ShareMode
{
    unsigned access = 0;
    unsigned share = 0;
};

// Returns the relevant part of a handle's specific rights.
unsigned SharedAccessOf(DWORD access);

// Acquires the sharing mode for the descriptor. Returns 0 if it is granted, and also if the file system doesn't support
// locks. Returns ERROR_SHARING_VIOLATION if another opened file excludes it.
DWORD TakeShareMode(int descriptor, bool canRead, const ShareMode& mode);

} // namespace qxplatform
