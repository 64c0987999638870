// The C library's header with the names that the Microsoft runtime adds.
#pragma once

#include_next <stdlib.h>

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

QXCRT_END

// The full path in the form /a/b. A null buffer gets one from malloc. Null, with errno, on failure: ERANGE if it
// doesn't fit.
EXTERN_C QXPLATFORM_API wchar_t* _wfullpath(wchar_t* fullPath, const wchar_t* path, size_t size);
