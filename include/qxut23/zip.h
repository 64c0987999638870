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

   `comment` is the entry's own. Name and comment are written in code page 437 if both can be, else both in UTF-8;
   some programs on other systems than Windows don't know the former. The entry has the file's last write time, in local
   time, and its attributes.

   QXUT_ZIP_OK, also for a null handle; QXUT_ZIP_CANNOT_OPEN or QXUT_ZIP_CANNOT_STORE, and then the archive is as
   before. */
QXUT_API int32_t UtilZIPAppend(HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName);

#define QXUT_ZIP_SUBFOLDERS 1 /* bit of UtilZIPAppendList */

/* Adds the files of `folder` (null or empty: the current one) whose names fit `pattern` (null: "*.*"), under their
   names without the folder. With QXUT_ZIP_SUBFOLDERS each subfolder follows, as an entry of its own and with all that
   it holds: the pattern is for `folder` alone. A link that leads back to a folder around it is not followed.

   A file that can't be added is left out. Gives QXUT_ZIP_OK in all cases. Each entry keeps a temporary file open until
   the archive is closed; where the process may have no more open files, the files that follow are left out, too. */
QXUT_API int32_t UtilZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, uint32_t flags);

/* Writes the archive, closes it and frees the handle, whatever the result. QXUT_ZIP_OK, also for a null handle, or
   QXUT_ZIP_CANNOT_WRITE: what was written until then stays on disk, nothing where there are too many entries. */
QXUT_API int32_t UtilZIPClose(HZIPFILE zip);

/* Extracts all entries of the archive `fileName` below `folder`, in their order. The folder (null or empty: the current
   one) is made if it is missing, and so are the subfolders that the names ask for. Files that are there are replaced.
   They get the times of their entries, to the second where the archive has them in universal time, but not their
   attributes. ZIP64 is read; the methods are "stored" and deflate. A name that is not told to be UTF-8 is taken for
   UTF-8 where the archive comes from Unix, else for code page 437.

   Gives 1, also for an archive without entries. Anything else is a C++ exception, derived from std::exception, which
   the caller has to expect; so this function is for callers in C++ whose compiler is that of the library. Where each
   module has a runtime library of its own, as usual on Windows, std::uncaught_exceptions() is off by one afterwards.
   Its what() is "Error loading zip file!" where the archive is missing or none, or has a path that the default code
   page doesn't have. Otherwise it is a text in UTF-8 that names the entry:
     - its name is absolute, has a drive or "..", or passes through a link in the folder, or it is a link itself;
     - its name, or a part of it, is one that Windows has no file of; that is so on all systems;
     - it is encrypted, or packed by another method;
     - it is damaged: the data can't be unpacked, or don't fit their size or checksum;
     - its file or folder can't be made or written.
   What was extracted before stays, the file of the failed entry is removed. Nothing is ever written outside of
   `folder`. */
QXUT_API int32_t UtilExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder);

QXUT_EXTERN_C_END

#endif
