/* Temporary files, and a manager that gets rid of them.
 *
 * The library's temporary files stand in the folder "trelmo" of the user's temp folder, and their names begin with
 * "_23_", the library's version. A file that can't be deleted at once, since a viewer has it open still, is handed over
 * to the manager: a thread deletes it as soon as nothing holds it. Once a day that thread also deletes what processes
 * left behind in the folder: files of these names that nobody has written to for an hour, provided that no process's
 * manager was active in the last three hours. For that each manager touches the file "_23_activity.signal" there.
 *
 * A process has one manager at most. All of these functions may be called on any thread, and none reports a failure:
 * what happens to the files is told in the debug output.
 */
#ifndef QXUT23_TEMPFILES_H
#define QXUT23_TEMPFILES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Makes the manager, if the process has none. */
QXUT_API void UtilTempFileMgrOpen(void);

/* Ends the manager, if there is one; files that it has still to delete are tried a last time. Waits for the manager's
   thread, 10 seconds at most, and dispatches the caller's window messages meanwhile. Call it before the library is
   unloaded. */
QXUT_API void UtilTempFileMgrClose(void);

/* Hands over a file to be deleted, by its path; a read-only one too. The manager deletes it when nobody has written to
   it for 10 seconds and nothing holds it open; until then it tries again every 1 to 10 seconds. Without a manager the
   file is tried once, at once. A null path, and a file that doesn't exist, are nothing to do. */
QXUT_API void UtilTempFileMgrAdd(const QXWCHAR* fileName);

/* The bits of UtilTempFileMgrCreateFile's flags; the others are ignored. */
#define QXUT_TEMPFILE_LONG_PATH 1 /* the temp folder with long names where the library's own folder doesn't do */

/* Makes an empty file with a new name: "_23_", the prefix, hex digits, a dot, the extension (with or without a dot of
   its own). The file stays until somebody deletes it, for instance UtilTempFileMgrAdd. `fileName` is an in-out BSTR: a
   null string is allocated with SysAllocStringLen, any other is replaced with SysReAllocStringLen; the caller frees it.
   It gets the full path, or an empty text if no file could be made. 1, or 0, with nothing done, if one of the three
   pointers is null. */
QXUT_API int32_t UtilTempFileMgrCreateFile(
    const QXWCHAR* prefix, const QXWCHAR* extension, uint32_t flags, QXWCHAR** fileName);

QXUT_EXTERN_C_END

#endif
