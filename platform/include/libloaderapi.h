// Modules, procedures and resources.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
