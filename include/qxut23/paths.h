/* File names: split, merge, make absolute, expand tokens.
 *
 * Both "\" and "/" are separators. Errors are errno values of the runtime library: 22 (EINVAL) for an invalid argument,
 * 34 (ERANGE) for a buffer that is too small.
 */
#ifndef QXUT23_PATHS_H
#define QXUT23_PATHS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Sizes of the caller's buffers in characters, terminators included. */
#define QXUT_PATH_DRIVE 3
#define QXUT_PATH_PART 256
#define QXUT_PATH_LENGTH 260

/* Splits a path. `drive` has room for QXUT_PATH_DRIVE characters, the other buffers for QXUT_PATH_PART; each may be
   null. The directory keeps its trailing separator and the extension its dot. Returns 0, or an error, in which case the
   buffers hold empty texts. */
QXUT_API int32_t UtilSplitpath(
    const QXWCHAR* path, QXWCHAR* drive, QXWCHAR* directory, QXWCHAR* fileName, QXWCHAR* extension);

/* Merges the parts into `path`, which has room for QXUT_PATH_LENGTH characters. Adds the separator after the directory
   and the dot before the extension if they are missing. Null parts are omitted. Returns 0, or an error, in which case
   the buffer holds an empty text. */
QXUT_API int32_t UtilMergepath(
    QXWCHAR* path, const QXWCHAR* drive, const QXWCHAR* directory, const QXWCHAR* fileName, const QXWCHAR* extension);

/* Makes a path absolute, relative to the current folder. `buffer` has room for `size` characters. Returns `buffer`, or
   null if the path doesn't fit or can't be made absolute. */
QXUT_API QXWCHAR* UtilFullpath(const QXWCHAR* path, QXWCHAR* buffer, size_t size);

/* The result of UtilGetFSInfo. The caller sets `size` to 20. */
typedef struct QXUTFSINFO
{
    uint32_t size;
    uint32_t maxPath;       /* always 260 */
    uint32_t driveLength;   /* always 3 */
    uint32_t maxNameLength; /* the longest component of a path, in characters */
    uint32_t flags;         /* what the file system can do: QXUT_FS_... */
} QXUTFSINFO;

#define QXUT_FS_CASE_SENSITIVE 1
#define QXUT_FS_CASE_PRESERVED 2
#define QXUT_FS_UNICODE 4
#define QXUT_FS_LONG_NAMES 8 /* names of 13 characters and more */
#define QXUT_FS_COMPRESSED 16
#define QXUT_FS_BAD_SIZE 64

/* Fills in `info` for the file system at a root path ("c:\", or null for the root of the current folder). Returns the
   file system's flags as GetVolumeInformation reports them (FILE_..., not the flags above). If the system can't provide
   the information, all flags and the name length are 0. Returns QXUT_FS_BAD_SIZE and writes nothing if `info` is null
   or has another size. */
QXUT_API uint32_t UtilGetFSInfo(const QXWCHAR* root, QXUTFSINFO* info);

/* Expands the names between percent signs in a folder path: environment variables first, then the shell folders in the
   registry ("%Personal%"). Unknown names are kept. `out` is an in-out BSTR: a null string is allocated with
   SysAllocStringLen, any other is replaced with SysReAllocStringLen; the caller frees it. If the address is null, the
   result is discarded. Returns 1, or 0 if `path` is null. */
QXUT_API int32_t UtilExpandDefaultTokensOfFolderPath(const QXWCHAR* path, QXWCHAR** out);

QXUT_EXTERN_C_END

#endif
