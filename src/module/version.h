// The library's version, as macros because the resource compiler supports nothing else.
#pragma once

#define QX_VERSION_MAJOR 23
#define QX_VERSION_MINOR 2
#define QX_VERSION_PATCH 0
