// Code pages, casing, comparison and locale information.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
