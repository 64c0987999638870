// System error codes and COM results.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
