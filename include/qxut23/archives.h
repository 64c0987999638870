/* ZIP archives for callers that can't catch C++ exceptions: the functions of zip.h with result codes, and with support
 * for permissions and links.
 *
 * Texts are zero-terminated and remain the caller's; null counts as the empty text. After a failure, QxGetErrorText
 * (errors.h) says in words what failed.
 */
#ifndef QXUT23_ARCHIVES_H
#define QXUT23_ARCHIVES_H

#include <qxut23/base.h>
#include <qxut23/zip.h>

QXUT_EXTERN_C_BEGIN

/* Result codes of QxExtractZip. */
enum
{
    QXUT_EXTRACT_OK = 0,
    QXUT_EXTRACT_CANNOT_OPEN = -1,  /* the archive is missing, can't be opened, or is a pipe or a device */
    QXUT_EXTRACT_NOT_ARCHIVE = -2,  /* the file is not an archive, or its directory is damaged */
    QXUT_EXTRACT_INCOMPLETE = -3,   /* some entries were not extracted; all others were */
    QXUT_EXTRACT_CANNOT_WRITE = -4, /* a folder can't be created or the disk is full; the rest was not extracted */
    QXUT_EXTRACT_NO_MEMORY = -5,
    QXUT_EXTRACT_STOPPED = -6 /* by the progress function; complete entries are kept */
};

/* Flag of QxExtractZip: links are left out, which is not a failure. */
#define QXUT_EXTRACT_NO_LINKS 0x1u

/* Receives an entry that was not extracted: its name (empty for a failure of the whole archive) and a sentence with the
   reason. The texts are valid during the call. It must not throw. */
typedef void (*QxExtractProblem)(void* context, const QXWCHAR* name, const QXWCHAR* reason);

/* Receives the entry that is being extracted and the number of bytes extracted so far, of all entries together. Called
   for each entry and each megabyte. Returns 0 to stop the extraction. It must not throw. */
typedef int32_t (*QxExtractProgress)(void* context, const QXWCHAR* name, uint64_t done);

/* Extracts an archive like UtilExtractZip, but doesn't throw. `problem` is called for each entry that was not
   extracted, and `progress` repeatedly during the extraction, both with `context`; either may be null. If there are
   several problems, QxGetErrorText describes the first. Returns a QXUT_EXTRACT code. */
QXUT_API int32_t QxExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder, uint32_t flags, QxExtractProblem problem,
    QxExtractProgress progress, void* context);

/* Flags of QxZIPAppend. */
#define QXUT_ZIP_MODES 0x2u  /* permissions, as archivers on Unix store them; names and comments in UTF-8 */
#define QXUT_ZIP_LINKS 0x4u  /* with QXUT_ZIP_MODES: links whose target is inside the archive are stored as links */
#define QXUT_ZIP_FOLDER 0x8u /* `path` is a folder: its entry is added, without contents; a link is followed */

/* Adds a file like UtilZIPAppend. With QXUT_ZIP_MODES, `storedName` is stored unchanged, even with a drive. The bits
   that let a program run as another user are never stored. A link whose target is absolute or may be outside the
   archive is stored as the file it leads to. On windows, files have no permissions unless the Windows Subsystem for
   Linux has stored some, and links are followed. */
QXUT_API int32_t QxZIPAppend(
    HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName, uint32_t flags);

/* Adds files like UtilZIPAppendList, but reports failures: if any file or folder couldn't be added, the result is the
   code of the first failure, and QxGetErrorText names that file. All others are added. A folder that doesn't exist is
   QXUT_ZIP_CANNOT_OPEN; a pattern that matches nothing is no failure. */
QXUT_API int32_t QxZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, uint32_t flags);

QXUT_EXTERN_C_END

#endif
