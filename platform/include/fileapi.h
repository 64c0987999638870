// Files: opening, reading, writing, attributes, finds, locks.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
