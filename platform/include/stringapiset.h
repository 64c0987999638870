// Conversion between code pages and UTF-16, comparison.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
