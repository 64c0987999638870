// The signal that stops a running thread.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

class ThreadObject;

// Enables the calling thread to be stopped by the signal.
void AdmitStopSignal();

// Sends the signal once.
void SendStopSignal(const ThreadObject& thread);

// Sends the signal until the thread is at its gate or, if it has been terminated, has ended. This takes longer only
// while the thread is inside the C library or another foreign library, which it has to leave first. After a fifth of a
// second a helper thread continues, and the caller returns.
void DriveToGate(ThreadObject& thread);

} // namespace qxplatform
