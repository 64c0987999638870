// Access rights, attributes and other constants of the system's core; critical sections' record.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
