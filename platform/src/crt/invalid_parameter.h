// Reporting of invalid arguments to functions of the runtime.
#pragma once

#include <errno.h>
#include <wchar.h>

namespace qxplatform
{

// Calls the handler, if there is one, sets errno to the error and returns it.
errno_t RefuseParameter(errno_t error);

} // namespace qxplatform
