// The C library's header plus the names added by the Microsoft runtime.
#ifndef QXPLATFORM_STDLIB_H
#define QXPLATFORM_STDLIB_H

#include_next <stdlib.h>

// A program with a wchar_t of 32 bits gets only the C library's header.
#if __SIZEOF_WCHAR_T__ == 2

#include <minwindef.h>
#include <wchar.h>

#define _MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256

QXCRT_BEGIN

// Splits a path at its last separator (`/` or `\`) and its last dot. A part with a null buffer and size 0 is skipped.
// If a part doesn't fit, all parts become empty and the result is ERANGE.
errno_t _wsplitpath_s(const wchar_t* path, wchar_t* drive, size_t driveSize, wchar_t* directory, size_t directorySize,
    wchar_t* name, size_t nameSize, wchar_t* extension, size_t extensionSize) QXCRT_NOEXCEPT QXCRT(_wsplitpath_s);

// Merges the parts that aren't null or empty, adding a missing colon, separator (`/`) or dot. If the path doesn't fit,
// it becomes empty and the result is ERANGE.
errno_t _wmakepath_s(wchar_t* path, size_t size, const wchar_t* drive, const wchar_t* directory, const wchar_t* name,
    const wchar_t* extension) QXCRT_NOEXCEPT QXCRT(_wmakepath_s);

typedef void (*_invalid_parameter_handler)(
    const wchar_t* expression, const wchar_t* function, const wchar_t* file, unsigned line, uintptr_t reserved);

// Sets the handler that is called when a function of this runtime rejects an argument; its text arguments are null.
// Returns the previous handler. Each program and library has a handler of its own.
_invalid_parameter_handler _set_invalid_parameter_handler(_invalid_parameter_handler handler) QXCRT_NOEXCEPT
    QXCRT(_set_invalid_parameter_handler);

QXCRT_END

// Stores the full path in the form /a/b. If the buffer is null, allocates one with malloc. Returns null and sets errno
// on failure: ERANGE if the path doesn't fit.
EXTERN_C wchar_t* _wfullpath(wchar_t* fullPath, const wchar_t* path, size_t size) QXP(_wfullpath);

#endif

#endif
