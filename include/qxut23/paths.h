/* File names: taken apart, put together, made full, their tokens expanded.
 *
 * Both "\" and "/" are taken as separators. Errors of the runtime library are its errno values: 22 for an argument that
 * is not valid, 34 for a buffer that is too small.
 */
#ifndef QXUT23_PATHS_H
#define QXUT23_PATHS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Characters of the caller's buffers, terminators included. */
#define QXUT_PATH_DRIVE 3
#define QXUT_PATH_PART 256
#define QXUT_PATH_LENGTH 260

/* Takes a path apart. `drive` has QXUT_PATH_DRIVE characters, the other three QXUT_PATH_PART; each may be null. The
   directory keeps the separator at its end, the extension its dot. 0, or an error; the buffers are empty texts then. */
QXUT_API int32_t UtilSplitpath(
    const QXWCHAR* path, QXWCHAR* drive, QXWCHAR* directory, QXWCHAR* fileName, QXWCHAR* extension);

/* Puts a path together in `path`, which has QXUT_PATH_LENGTH characters, adding the separator behind the directory and
   the dot before the extension where they are missing. Null parts are left out. 0, or an error; the buffer is an empty
   text then. */
QXUT_API int32_t UtilMergepath(
    QXWCHAR* path, const QXWCHAR* drive, const QXWCHAR* directory, const QXWCHAR* fileName, const QXWCHAR* extension);

/* Makes a path full, from the current folder on. `buffer` has `size` characters. Gives `buffer`, or null if the path
   doesn't fit or can't be made full. */
QXUT_API QXWCHAR* UtilFullpath(const QXWCHAR* path, QXWCHAR* buffer, size_t size);

/* What UtilGetFSInfo tells. The caller sets `size` to 20. */
typedef struct QXUTFSINFO
{
    uint32_t size;
    uint32_t maxPath;       /* always 260 */
    uint32_t driveLength;   /* always 3 */
    uint32_t maxNameLength; /* of one component, in characters */
    uint32_t flags;         /* QXUT_FS_... */
} QXUTFSINFO;

#define QXUT_FS_CASE_SENSITIVE 1
#define QXUT_FS_CASE_PRESERVED 2
#define QXUT_FS_UNICODE 4
#define QXUT_FS_LONG_NAMES 8 /* names of 13 characters and more */
#define QXUT_FS_COMPRESSED 16
#define QXUT_FS_BAD_SIZE 64

/* Asks for the file system at a root path ("c:\", or null for that of the current folder). Gives the flags; all 0, and
   the name length too, if the system can't tell; QXUT_FS_BAD_SIZE, and nothing is written, for a null block or another
   size. */
QXUT_API uint32_t UtilGetFSInfo(const QXWCHAR* root, QXUTFSINFO* info);

/* Expands the names between percent signs in a folder's path: environment variables first, then the shell folders that
   the registry knows ("%Personal%"). Unknown names stay. `out` is an in-out BSTR: a null string is allocated with
   SysAllocStringLen, any other is replaced with SysReAllocStringLen; the caller frees it; a null address drops the
   result. 1, or 0 for a null path. */
QXUT_API int32_t UtilExpandDefaultTokensOfFolderPath(const QXWCHAR* path, QXWCHAR** out);

QXUT_EXTERN_C_END

#endif
