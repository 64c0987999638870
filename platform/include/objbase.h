// Access modes of storages.
#pragma once

#include <combaseapi.h>

#define STGM_SIMPLE 0x08000000
