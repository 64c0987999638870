/* The machine's settings of the log file. qxut23/debug.h describes the log itself.
 *
 * A process reads the settings when it loads the library, so a change affects processes that start later.
 */
#ifndef QXUT23_LOG_SETTING_H
#define QXUT23_LOG_SETTING_H

#include <qxut23/base.h>

#include <stddef.h>

QXUT_EXTERN_C_BEGIN

/* Flags of the settings. */
#define QXUT_LOG_FLUSH 0x1u   /* each line is written through to the disk */
#define QXUT_LOG_COUNTER 0x2u /* lines show the time since the program's first line; never stored */

/* Reads the settings as a process that loaded the library now would read them.

   - path: receives the path of the log file, zero-terminated. If it doesn't fit into `capacity` characters, an empty
     text is stored instead. May be null if `capacity` is 0.
   - flags: receives a combination of QXUT_LOG_... May be null.

   Returns the length of the path without the terminator, or 0 if no log file is set. */
QXUT_API size_t QxGetLogSetting(QXWCHAR* path, size_t capacity, uint32_t* flags);

/* Stores the settings for the whole machine, which requires the right to change the machine's settings.

   - name: the log file. A name without a folder refers to the temp folder of each process. Null or an empty text
     switches the log off.
   - flags: QXUT_LOG_FLUSH or 0.

   Returns 1 on success. Returns 0 on failure; GetLastError returns the reason, and QxGetErrorText describes it. */
QXUT_API int32_t QxSetLogSetting(const QXWCHAR* name, uint32_t flags);

QXUT_EXTERN_C_END

#endif
