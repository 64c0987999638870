// The critical sections that a thread has.
#pragma once

namespace qxplatform
{

// Whether the calling thread is inside of any. It isn't ended there, since nobody could enter that section any more:
// its end comes when it leaves the last one. A thread that blocks in one for ever is therefore never gone, nor is its
// handle ever signalled; who needs the section waits for ever in either case. May be called by a signal handler.
bool HoldsCriticalSections();

} // namespace qxplatform
