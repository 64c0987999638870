// The handlers of exceptions.
#pragma once

#include <winnt.h>

namespace qxplatform
{

// Calls the vectored handlers until one of them wants the execution to continue. Returns false if none does. Takes no
// lock and allocates nothing, because an exception may come in the middle of any function.
bool OfferToVectoredHandlers(EXCEPTION_POINTERS& exception);

} // namespace qxplatform
