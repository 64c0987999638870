/* ZIP archives: written file by file, and unpacked.
 *
 * The format is that of PKWARE's APPNOTE.TXT, with raw deflate (RFC 1951) and without ZIP64: a source, its compressed
 * form and the archive have at most 4 GB - 1 (0xFFFFFFFF bytes), and there are at most 65,535 entries.
 *
 * Texts are zero-terminated and stay the caller's; null counts as the empty text. A handle is for one thread at a time;
 * different handles have nothing to do with each other.
 */
#ifndef QXUT23_ZIP_H
#define QXUT23_ZIP_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* An archive that is being written. Opaque; null is the invalid one, which every function takes without harm. */
typedef struct ZIPFileObject* HZIPFILE;

/* Result codes. */
enum
{
    QXUT_ZIP_OK = 0,
    QXUT_ZIP_CANNOT_OPEN = -1,  /* the file to add can't be opened */
    QXUT_ZIP_CANNOT_STORE = -2, /* it can't be compressed, or is too large */
    QXUT_ZIP_CANNOT_WRITE = -3  /* the archive can't be written, is too large, or would have too many entries */
};

/* Makes the archive `fileName`; a file of that name is replaced. `comment` is that of the whole archive, written in the
   process's default code page; at most 65,535 bytes of it are kept. The file stays empty, and open without sharing,
   until UtilZIPClose. Gives a handle, or null if the file can't be made. */
QXUT_API HZIPFILE UtilZIPCreate(const QXWCHAR* fileName, const QXWCHAR* comment);

/* Adds the file `path`. It is compressed at once, into a temporary file that stays open until UtilZIPClose, so it may
   change or go afterwards.

   `storedName` is its name in the archive; without one it is `path`. A drive ("C:") or server ("\\server") at its
   beginning is left out, the backslash behind it stays, and backslashes become slashes: "C:\dir\a.txt" is stored as
   "/dir/a.txt". Since UtilExtractZip and other programs refuse or change a name with a slash in front, give a relative
   name where that matters.

   `comment` is the entry's own. Name and comment are written in code page 437 if both can be, else both in UTF-8. The
   entry has the file's last write time, in local time, and its attributes.

   QXUT_ZIP_OK, also for a null handle; QXUT_ZIP_CANNOT_OPEN or QXUT_ZIP_CANNOT_STORE, and then the archive is as
   before. */
QXUT_API int32_t UtilZIPAppend(HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName);

#define QXUT_ZIP_SUBFOLDERS 1 /* bit of UtilZIPAppendList */

/* Adds the files of `folder` (null or empty: the current one) whose names fit `pattern` (null: "*.*"), under their
   names without the folder. With QXUT_ZIP_SUBFOLDERS each subfolder follows, as an entry of its own and with all that
   it holds: the pattern is for `folder` alone. A link that leads back to a folder around it is not followed.

   A file that can't be added is left out. Gives QXUT_ZIP_OK in all cases. */
QXUT_API int32_t UtilZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, uint32_t flags);

/* Writes the archive, closes it and frees the handle, whatever the result. QXUT_ZIP_OK, also for a null handle, or
   QXUT_ZIP_CANNOT_WRITE: what was written until then stays on disk, nothing where there are too many entries. */
QXUT_API int32_t UtilZIPClose(HZIPFILE zip);

QXUT_EXTERN_C_END

#endif
