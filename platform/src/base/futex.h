// Sleeping on a 32-bit word of this process.
#pragma once

#include <minwindef.h>

#include <ctime>

namespace qxplatform
{

// Sleeps while the word holds the value, at most until `end` by the steady clock. May return early: callers look again.
void FutexWait(LONG* word, LONG value, const timespec* end = nullptr);
// The word itself isn't looked at, and may be gone by now: whoever sleeps on another one at its place looks again.
void FutexWakeOne(LONG* word);
void FutexWakeAll(LONG* word);

} // namespace qxplatform
