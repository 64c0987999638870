// Environment variables and the current folder.
#pragma once

#include <minwindef.h>

EXTERN_C_START
EXTERN_C_END
