// Basics of the network functions. The layer has none of these functions; the types are for late binding.
#pragma once

#include <minwindef.h>

#define NET_API_STATUS DWORD
#define MAX_PREFERRED_LENGTH ((DWORD)-1)
