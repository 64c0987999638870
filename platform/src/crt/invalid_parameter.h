// Arguments that a function of the runtime refuses.
#pragma once

#include <errno.h>
#include <wchar.h>

namespace qxplatform
{

// Tells the handler, if there is one, and sets errno to the error, which is the result too.
errno_t RefuseParameter(errno_t error);

} // namespace qxplatform
