// The process and its threads.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
