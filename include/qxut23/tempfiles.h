/* Temporary files, and a manager that deletes them.
 *
 * The library's temporary files are in the folder "trelmo" of the user's temp folder. Their names begin with "_23_",
 * the library's version. A file that can't be deleted immediately, because a viewer still has it open, is handed over
 * to the manager: its thread deletes the file as soon as nothing holds it open. Once a day the thread also deletes
 * files that other processes have left in the folder: files with such names that nobody has written to for an hour,
 * provided that no process's manager has been active in the last three hours. To signal its activity, each manager
 * touches the file "_23_activity.signal" in the folder.
 *
 * A process has at most one manager. All functions may be called on any thread. Failures aren't reported; the debug
 * output shows what happens to the files.
 */
#ifndef QXUT23_TEMPFILES_H
#define QXUT23_TEMPFILES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Creates the manager if the process has none. */
QXUT_API void UtilTempFileMgrOpen(void);

/* Ends the manager, if there is one, after a last attempt to delete its remaining files. Waits at most 10 seconds for
   the manager's thread and dispatches the caller's window messages meanwhile. Call it before the library is unloaded.
 */
QXUT_API void UtilTempFileMgrClose(void);

/* Hands over a file for deletion, by path; the file may be read-only. The manager deletes it once nobody has written to
   it for 10 seconds and nothing holds it open, and retries every 1 to 10 seconds until then. Without a manager, one
   attempt is made immediately. Does nothing if the path is null or the file doesn't exist. */
QXUT_API void UtilTempFileMgrAdd(const QXWCHAR* fileName);

/* A flag for UtilTempFileMgrCreateFile, kept for compatibility. All flags are ignored. */
#define QXUT_TEMPFILE_LONG_PATH 1 /* long form of the temp folder's path, which is always used */

/* Creates an empty file with a new name that consists of "_23_", the prefix, hex digits, a dot and the extension (with
   or without a leading dot). The file exists until somebody deletes it, for example UtilTempFileMgrAdd. `fileName` is
   an in-out BSTR: a null string is allocated with SysAllocStringLen, any other is replaced with SysReAllocStringLen;
   the caller frees it. It receives the full path, or an empty text if the file could not be created. Returns 1. Returns
   0 and does nothing if one of the three pointers is null. */
QXUT_API int32_t UtilTempFileMgrCreateFile(
    const QXWCHAR* prefix, const QXWCHAR* extension, uint32_t flags, QXWCHAR** fileName);

QXUT_EXTERN_C_END

#endif
