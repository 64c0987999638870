// The signals of faults: SIGSEGV, SIGBUS, SIGILL, SIGFPE and SIGTRAP.
#pragma once

namespace qxplatform
{

// Handlers for the signals are installed while there are users: vectored handlers and the filter. When the last user is
// gone, the host's handlers are restored, except where another handler has been installed in the meantime.
void UseFaultSignals();
void ReleaseFaultSignals();

} // namespace qxplatform
