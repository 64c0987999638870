/* A description of the calling thread's last failure. */
#ifndef QXUT23_ERRORS_H
#define QXUT23_ERRORS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Stores a description of the calling thread's last failure in `*text`: what failed, for which file or entry, and why.
   The functions of archives.h, zip.h and log_setting.h set it, and so does every function that runs out of memory or
   ends because of another exception. A successful call leaves it unchanged, so call this only after a failure. The
   descriptions of the 256 threads that failed last are kept.

   `text` is an in-out BSTR: a null string is allocated with SysAllocStringLen, any other is replaced with
   SysReAllocStringLen, and the caller frees it with SysFreeString. Returns 1. Returns 0 and leaves the string unchanged
   if there is no description, if memory runs out, or if `text` is null. */
QXUT_API int32_t QxGetErrorText(QXWCHAR** text);

QXUT_EXTERN_C_END

#endif
