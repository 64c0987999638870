/* Access to files: who has a file open, rights of accounts, paths of drives and shares.
 *
 * Null texts count as empty. A BSTR result is in-out: a null string is allocated with SysAllocStringLen, any other is
 * replaced with SysReAllocStringLen; the caller frees it. If its address is null, the text is discarded. Failures are
 * reported to the debug output where the function says so.
 *
 * On linux, drives and shares are links in the folder "dosdevices" of the platform library's home: "q:" for Q:, and
 * "unc/server/share" for \\server\share. If "q:" is a relative link to "unc/server/share", Q: is connected with
 * \\server\share. platform/README.md describes them, and how rights become POSIX access lists.
 */
#ifndef QXUT23_ACCESS_H
#define QXUT23_ACCESS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Ways in which a file is open, as returned by UtilGetFileInfoAccess. */
#define QXUT_FILE_OPEN_READ 1
#define QXUT_FILE_OPEN_WRITE 2
#define QXUT_FILE_OPEN_CREATE 4

/* Returns which users have a file open on its server, and how. `path` is \\server\share\... or a path on a drive that
   is connected with a share. The server lists its open files by its own paths, of which only the drive letter is
   removed: "D:\data\a.txt" matches \\server\data\a.txt. So files are found only if the shared folder is in the root of
   a drive and the share has the folder's name.

   `access` receives QXUT_FILE_OPEN_ values, combined for all users. `users` is a BSTR result: the names, separated by
   tabs. For a file that isn't on a server, these are 0 and the empty text, and the result is 0.

   Returns 0 for success.
   Returns -2 if a network call failed. `access` is 0. If the drives' connections can't be listed (the debug output says
   so), `users` is unchanged; if the server doesn't list its open files, `users` receives the names that it listed
   before the failure, usually none. On linux, no server's files can be listed.
   Returns -3 and writes to the debug output if `access` is null; `users` is unchanged then. */
QXUT_API int32_t UtilGetFileInfoAccess(const QXWCHAR* path, uint32_t* access, QXWCHAR** users);

/* Values for `inheritance` of UtilAddAccessRights, which may be combined: what a folder passes on. */
#define QXUT_INHERIT_NONE 0
#define QXUT_INHERIT_FILES 1
#define QXUT_INHERIT_FOLDERS 2

/* Sets the rights of an account (a user or a group) on a file or folder. They replace the account's previous rights;
   all other accounts keep their rights. A leading ".\" of `account` is ignored. `permissions` is an access mask of the
   system, such as GENERIC_READ (0x80000000) or FILE_GENERIC_READ.

   On linux the mask becomes the rights to read, to write and to execute; folders that may be read may also be entered.
   If the account is the file's owner or its group, their entries are changed. With an inheritance other than 0, the
   default list of a folder is set too, which applies to both files and folders.

   Returns 0, or -2 with a line in the debug output that names the step that failed and the system's reason: reading the
   present rights (no such file), changing them (no such account), or storing them (not permitted). */
QXUT_API int32_t UtilAddAccessRights(
    const QXWCHAR* path, const QXWCHAR* account, uint32_t permissions, uint32_t inheritance);

/* Makes the path absolute and converts a path on a share to the drive that is connected with it: \\server\share\a
   becomes X:\a, and \\server\share becomes X:. If several drives are connected with it, the system's order decides. All
   other paths are only made absolute. `result` is a BSTR result. Returns 0, or -1 with `result` unchanged if the
   connections of a path on a share can't be listed. */
QXUT_API int32_t UtilEnsureLocalPath(const QXWCHAR* path, QXWCHAR** result);

/* Makes the path absolute and converts a path with a drive letter to the form \\server\share\... All other paths are
   only made absolute. `result` is a BSTR result. Returns 0, or -1 with `result` unchanged if the drive isn't connected
   with a share, as local disks aren't. */
QXUT_API int32_t UtilEnsureUNCPath(const QXWCHAR* path, QXWCHAR** result);

/* The same with 8-bit texts in the default code page, for installation scripts. `result` has room for `resultSize`
   bytes. Returns 0 after storing the path and its terminator, or -1 as the functions above. If the path doesn't fit,
   returns `resultSize` and leaves the buffer unchanged; a null buffer is too small for any path. A `resultSize` of 0
   therefore returns 0 without a path. */
QXUT_API int32_t UtilEnsureLocalPathForWise(const char* path, char* result, uint32_t resultSize);
QXUT_API int32_t UtilEnsureUNCPathForWise(const char* path, char* result, uint32_t resultSize);

/* Like UtilAddAccessRights with 8-bit texts in the default code page and a security identifier instead of a name:
   Base64 of its bytes, or "SID:" and the form S-1-... An identifier that the system can't resolve counts as the account
   with the empty name, so the result is -2. On linux no identifier can be resolved yet. */
QXUT_API int32_t UtilAddAccessRightsForWise(
    const char* path, const char* sid, uint32_t permissions, uint32_t inheritance);

QXUT_EXTERN_C_END

#endif
