// The C library's header with the names that the Microsoft runtime adds.
#pragma once

#include_next <stdlib.h>

// Programs with a wchar_t of 32 bits have the C library's header alone.
#if __SIZEOF_WCHAR_T__ == 2

#include <minwindef.h>
#include <wchar.h>

#define _MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256

QXCRT_BEGIN

// Takes a path apart at its last separator, which is `/` or `\`, and its last point. A part is left out by a null
// buffer and size 0. If a part doesn't fit, all become empty, and the result is ERANGE.
errno_t _wsplitpath_s(const wchar_t* path, wchar_t* drive, size_t driveSize, wchar_t* directory, size_t directorySize,
    wchar_t* name, size_t nameSize, wchar_t* extension, size_t extensionSize) QXCRT_NOEXCEPT QXCRT(_wsplitpath_s);

// Puts the parts that aren't null or empty together, with the colon, the separator `/` and the point that are missing.
// If the path doesn't fit it becomes empty, and the result is ERANGE.
errno_t _wmakepath_s(wchar_t* path, size_t size, const wchar_t* drive, const wchar_t* directory, const wchar_t* name,
    const wchar_t* extension) QXCRT_NOEXCEPT QXCRT(_wmakepath_s);

typedef void (*_invalid_parameter_handler)(
    const wchar_t* expression, const wchar_t* function, const wchar_t* file, unsigned line, uintptr_t reserved);

// Who is told that a function of this runtime got an argument that it refuses; no texts come with it. The result is the
// former one. Each program and library has its own.
_invalid_parameter_handler _set_invalid_parameter_handler(_invalid_parameter_handler handler) QXCRT_NOEXCEPT
    QXCRT(_set_invalid_parameter_handler);

QXCRT_END

// The full path in the form /a/b. A null buffer gets one from malloc. Null, with errno, on failure: ERANGE if it
// doesn't fit.
EXTERN_C wchar_t* _wfullpath(wchar_t* fullPath, const wchar_t* path, size_t size) QXP(_wfullpath);

#endif
