// Sleeping on a 32-bit word of this process.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

// Sleeps while the word holds the value. May return early: callers look again.
void FutexWait(LONG* word, LONG value);
void FutexWakeOne(LONG* word);

} // namespace qxplatform
