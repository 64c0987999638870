// The thread of a process that waits for changes of the session and writes the events to the file.
#pragma once

#include "trace/session_block.h"

#include <evntprov.h>

#include <atomic>

namespace qxplatform
{

// True while events go to the rings. EventWrite reads it first.
extern constinit std::atomic<bool> isTraceRecording;
extern constinit std::atomic<std::uint8_t> traceLevel;

// Called with the session whenever it has changed, by the layer's thread.
using SessionChanged = void (*)(const TraceSession& session);

struct TraceWorker;

// Starts the thread, unless it runs, and sets `session` to the current session. Returns an error code. The caller holds
// a lock during this call and the next one.
DWORD StartTraceWorker(SessionChanged changed, TraceSession& session);
// Returns the thread, which the caller must end. A later start makes another one.
TraceWorker* DetachTraceWorker();
// Writes the remaining events and ends the thread. The caller must not hold a lock that `changed` takes. Null is
// ignored.
void EndTraceWorker(TraceWorker* ending);
// Makes the thread write without waiting for its next turn.
void HurryTraceWorker();

} // namespace qxplatform
