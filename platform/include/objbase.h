// The older COM initialisation functions, and access modes of storages.
#pragma once

#include <combaseapi.h>

typedef enum tagCOINIT
{
    COINIT_MULTITHREADED = 0x0,
    COINIT_APARTMENTTHREADED = 0x2,
    COINIT_DISABLE_OLE1DDE = 0x4,
    COINIT_SPEED_OVER_MEMORY = 0x8
} COINIT;

#define STGM_SIMPLE 0x08000000
#define STGM_SHARE_EXCLUSIVE 0x00000010
#define STGM_SHARE_DENY_WRITE 0x00000020
#define STGM_SHARE_DENY_NONE 0x00000040
