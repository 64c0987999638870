/* ZIP archives: created file by file, and extracted.
 *
 * The format follows PKWARE's APPNOTE.TXT, with raw deflate (RFC 1951) and without ZIP64. A source file, its compressed
 * form and the archive have at most 4 GB - 1 (0xFFFFFFFF bytes) each, and an archive has at most 65,535 entries.
 *
 * Texts are zero-terminated and remain the caller's; null counts as the empty text. A handle may be used by one thread
 * at a time. Different handles are independent.
 */
#ifndef QXUT23_ZIP_H
#define QXUT23_ZIP_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* An archive that is being written. Opaque. Null is the invalid handle, which every function accepts and ignores. */
typedef struct ZIPFileObject* HZIPFILE;

/* Result codes. */
enum
{
    QXUT_ZIP_OK = 0,
    QXUT_ZIP_CANNOT_OPEN = -1,  /* the file to add can't be opened */
    QXUT_ZIP_CANNOT_STORE = -2, /* the file can't be compressed, or is too large */
    QXUT_ZIP_CANNOT_WRITE = -3  /* the archive can't be written, is too large, or would have too many entries */
};

/* Creates the archive `fileName`, replacing an existing file. `comment` is the comment of the whole archive, written in
   the process's default code page and truncated to 65,535 bytes. Until UtilZIPClose the file is empty and open without
   sharing. Returns a handle, or null if the file can't be created. */
QXUT_API HZIPFILE UtilZIPCreate(const QXWCHAR* fileName, const QXWCHAR* comment);

/* Adds the file `path`. It is compressed immediately into a temporary file, which all entries share and which stays
   open until UtilZIPClose, so the original may be changed or deleted afterwards.

   `storedName` is its name in the archive; if it is null or empty, `path` is used. A leading drive ("C:") or server
   ("\\server") is removed, the backslash after it is kept, and backslashes become slashes: "C:\dir\a.txt" is stored as
   "/dir/a.txt". UtilExtractZip and other programs refuse or change names with a leading slash; pass a relative name if
   that matters.

   `comment` is the comment of the entry. Name and comment are written in code page 437 if both can be represented in
   it, otherwise both in UTF-8. Some programs on systems other than Windows don't support code page 437. The entry has
   the file's last write time, in local time, and its attributes.

   Returns QXUT_ZIP_OK, also for a null handle. Returns QXUT_ZIP_CANNOT_OPEN or QXUT_ZIP_CANNOT_STORE on failure; the
   archive is unchanged then. A folder, a pipe or a device can't be opened. */
QXUT_API int32_t UtilZIPAppend(HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName);

#define QXUT_ZIP_SUBFOLDERS 1 /* bit of `flags` for UtilZIPAppendList */

/* Adds the files of `folder` (null or empty: the current folder) whose names match `pattern` (null: "*.*"), under their
   names without the folder. With QXUT_ZIP_SUBFOLDERS, every subfolder is added as an entry of its own and with its
   whole contents; the pattern applies only to `folder` itself. Links that lead back to an enclosing folder are not
   followed.

   Files that can't be added are skipped. Always returns QXUT_ZIP_OK; QxZIPAppendList (archives.h) reports them. */
QXUT_API int32_t UtilZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, uint32_t flags);

/* Writes the archive, closes it and frees the handle, whatever the result. Returns QXUT_ZIP_OK, also for a null handle.
   Returns QXUT_ZIP_CANNOT_WRITE on failure; the part written so far stays on disk. If there are too many entries,
   nothing is written. */
QXUT_API int32_t UtilZIPClose(HZIPFILE zip);

/* Extracts all entries of the archive `fileName` into `folder`. The folder (null or empty: the current folder) and the
   subfolders named by the entries are created if necessary. Existing files are replaced, even read-only ones. ZIP64
   archives are supported; the supported methods are "stored" and deflate.

   Files get the times of their entries, accurate to the second if the archive stores them in UTC. On linux, files and
   new folders also get the permissions that archivers on Unix store, restricted by the process's umask and without the
   bits that let a program run as another user; links are created after all files. On windows there are no permissions
   and links. Other attributes are never restored.

   A name is UTF-8 if its flag says so. Otherwise the name in Info-ZIP's Unicode Path field (0x7075) applies if the
   field's checksum fits. Other names are UTF-8 if the archive was created on Unix or macOS and they are valid UTF-8,
   and code page 437 in all other cases.

   Returns 1, also for an empty archive. Throws a C++ exception derived from std::exception on any failure, so the
   function can be called only from C++ code built with the same compiler as the library; QxExtractZip (archives.h)
   returns codes instead. If each module has its own runtime library, as usual on Windows, std::uncaught_exceptions() is
   off by one afterwards.
   what() is "Error loading zip file!" if the archive is missing, can't be opened, is a pipe or a device, or is not a
   ZIP archive. Otherwise it is a UTF-8 text that names the first entry that was skipped and the reason, and ends with
   the number of other skipped entries, as in "(and 2 more)". All other entries are extracted. An entry is skipped if
     - its name is absolute, has a drive or "..", or passes through a link in the folder;
     - a component of its name isn't a valid file name: on windows because of its characters or because it is the name
       of a device, on linux because it is longer than 255 bytes;
     - it is a link that may lead out of the folder; on windows, any link;
     - it is encrypted, or uses another compression method;
     - it is damaged: the data can't be decompressed, or doesn't match the entry's size or checksum;
     - its file or folder can't be created.
   If a file can't be written, if `folder` can't be created or if the archive's directory is damaged, the entries that
   follow are not extracted. The file of a failed entry is removed. Nothing is ever written outside `folder`. */
QXUT_API int32_t UtilExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder);

QXUT_EXTERN_C_END

#endif
