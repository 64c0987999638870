// Global memory, FormatMessageW, pointer tests and what has no header of its own.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
