// The critical sections held by a thread.
#pragma once

namespace qxplatform
{

// Returns true if the calling thread holds any critical section. A thread isn't ended while it holds a section, because
// nobody could enter the section any more; it ends when it leaves the last one. If it blocks in a section forever, it
// never ends and its handle is never signalled; threads that need the section would wait forever in either case.
// Async-signal-safe.
bool HoldsCriticalSections();

} // namespace qxplatform
