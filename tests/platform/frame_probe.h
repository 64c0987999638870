#pragma once

#include "exported.h"

#ifdef __cplusplus
extern "C"
#endif
    EXPORTED int
    ProbeFrame(int (*inside)(void*), void* user);
