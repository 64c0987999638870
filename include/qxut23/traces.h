/* Traces: the life of threads and the run of jobs on a timeline.
 *
 * On windows the library writes its markers to the system's event tracing, provider
 * {AE1860CF-EE7C-4659-BB7B-C7AED00F23E4}, and the system's own tools record them. On linux these functions control the
 * recording; the file has a format of the platform library, which `qxut trace convert` reads.
 */
#ifndef QXUT23_TRACES_H
#define QXUT23_TRACES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Starts to record the markers of all the user's processes whose settings allow markers (SupportConcurrencyVisualizer
   under HKEY_CURRENT_USER\Software\trelmo begins with T). With `allow` not 0, sets this setting first. A process that
   already uses threads of the library, such as those of a pool, isn't recorded until all of them have ended. Creates
   the file `path`, which must not exist.

   Returns 0 or an error code of the system, whose text QxGetErrorText returns: ERROR_ALREADY_EXISTS (183) if a
   recording runs, ERROR_FILE_EXISTS (80) if the file exists, ERROR_NOT_SUPPORTED (50) on windows. */
QXUT_API int32_t QxTraceStart(const QXWCHAR* path, int32_t allow);

/* Stops the recording. Waits up to a second until all processes have written their last markers, and copies the name of
   the file to `path` if its `capacity` in characters suffices.

   Returns 0 or an error code: ERROR_NOT_FOUND (1168) if there is no recording, ERROR_NOT_SUPPORTED (50) on windows. */
QXUT_API int32_t QxTraceStop(QXWCHAR* path, size_t capacity);

QXUT_EXTERN_C_END

#endif
