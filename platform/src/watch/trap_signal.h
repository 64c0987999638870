// Hits of data breakpoints as exceptions.
#pragma once

namespace qxplatform
{

// Handles SIGTRAP from now on. A hit is offered to the vectored handlers as EXCEPTION_SINGLE_STEP. If none of them
// continues, and for all other causes, the handler that was set before is called; the default is the end of the
// process.
void CatchTraps();

} // namespace qxplatform
