// Blocking on a 32-bit word of this process.
#pragma once

#include <minwindef.h>

#include <ctime>

namespace qxplatform
{

// Blocks while the word has the value, at most until `end` on the monotonic clock. May return early; callers check
// again.
void FutexWait(LONG* word, LONG value, const timespec* end = nullptr);
// Wakes one thread. Doesn't access the word, which may no longer exist. A thread that blocks on another word at that
// address checks again.
void FutexWakeOne(LONG* word);
void FutexWakeAll(LONG* word);

} // namespace qxplatform
