// Sharing modes that hold between all opened files of all processes that use the layer.
//
// Every opened file keeps one lock near 2^62, far behind any data, whose place says how the file was opened: the rights
// that count (reading, writing, deleting) and what it shares make one of 64 slots. Whoever opens the file looks whether
// a lock stands in a slot that excludes it. The kernel drops the lock with the descriptor, so that a process that dies
// leaves nothing behind, and programs that don't use the layer neither see these locks nor are held up by them.
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

// What counts of the specific rights of a handle.
unsigned SharedAccessOf(DWORD access);

// Takes the share mode for the descriptor. Null if it is granted, and also where the file system has no locks;
// ERROR_SHARING_VIOLATION if another opened file excludes it.
DWORD TakeShareMode(int descriptor, bool canRead, const ShareMode& mode);

} // namespace qxplatform
