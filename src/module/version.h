// The library's version, for the compiler and for the resource compiler, which knows macros only.
#pragma once

#define QX_VERSION_MAJOR 23
#define QX_VERSION_MINOR 2
#define QX_VERSION_PATCH 0
