// The signal that stops a thread which runs.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

class ThreadObject;

// Lets the calling thread be stopped by the signal.
void AdmitStopSignal();

// Sends the signal until the thread stands at its gate, or has ended where its end is ordered. That takes longer only
// where the thread is inside the C library or another foreign one, which it has to leave first: after a fifth of a
// second a thread of the layer goes on with it, and the caller needn't wait.
void DriveToGate(ThreadObject& thread);

} // namespace qxplatform
