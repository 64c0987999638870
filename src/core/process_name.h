#pragma once

#include "core/string.h"

namespace qx
{

// The file name of the process's program without directory and extension, in upper case.
String ProcessBaseName();

} // namespace qx
