/* Document information: title, subject, author, last author, keywords, comments and dates of a document, whatever kind
 * of file it is.
 *
 * The kind is recognised by the extension of the file, otherwise by its first bytes. Compound files of office programs
 * (.doc, .xls, .ppt and others), Office Open XML and OpenDocument archives, Word 2 and WordPerfect documents, XML files
 * (.xml), PDF files, web pages (.htm, .html, .mht), Rich Text (.rtf), mail (.eml, .msg), TIFF and JPEG files are read.
 * For all other files, only the time of the last write is returned. The author of a mail is its sender, the last author
 * its recipients, and the title its subject. For a shortcut (.lnk), its target is read.
 *
 * A list caches what it reads. Requests within the lifetime of a cached document don't touch the disk. Later requests
 * read the document again only if its time of last write has changed. Paths are compared without case, even where file
 * names are case-sensitive. A document on a network share (\\server\share\...) is read on a separate thread, so that an
 * unresponsive server can't block the caller for longer than the caller allows. A share that doesn't respond is
 * contacted only once per process.
 *
 * Any thread may use a list.
 */
#ifndef QXUT23_DOCINFO_H
#define QXUT23_DOCINFO_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

typedef struct QxUtDocumentList* HUTDOCINFO;

struct tagVARIANT; /* the system's VARIANT (<oleauto.h>) */

/* Receives the information about a document. Each pointer may be null; the others point to initialised variants,
   whose old values are cleared. The caller clears the new ones. */
typedef struct QxUtDocumentInfo
{
    uint32_t size; /* of this structure in bytes: 80, or 72 for one that ends before `resolvedPath` */
    uint32_t reserved;
    /* VT_DATE in local time. VT_EMPTY if the document has no such date, or an invalid one. If the document doesn't
       store when it was last saved, `lastSaved` is the time of the file's last write. */
    struct tagVARIANT* created;
    struct tagVARIANT* lastSaved;
    /* VT_BSTR, or VT_EMPTY if the document has no such text. */
    struct tagVARIANT* title;
    struct tagVARIANT* subject;
    struct tagVARIANT* author;
    struct tagVARIANT* lastAuthor;
    struct tagVARIANT* keywords;
    struct tagVARIANT* comments;
    /* VT_BSTR: the full path that was read. */
    struct tagVARIANT* resolvedPath;
} QxUtDocumentInfo;

/* Opens a list that caches documents for the given number of seconds; 0 disables the cache. Returns null if memory runs
   out. */
QXUT_API HUTDOCINFO UtilDocInfoOpen(uint32_t cacheSeconds);

/* Closes a list. No other call may use it any more. Waits for all threads that are still reading from a share. Null is
   ignored. */
QXUT_API void UtilDocInfoClose(HUTDOCINFO list);

/* Gets the information about the document at `path`. A "|" and everything after it are not part of the file's path, but
   paths that differ only there are separate entries of the list. `waitSeconds` is how long to wait for a document on a
   share; with 0 the call returns the cached values. While a document is cached, the `waitSeconds` of its first request
   applies to all requests.
   Returns 1 if the document was accessible. `info` may be null if only the result is wanted; a structure of fewer than
   72 bytes receives nothing. Returns 0, and nothing is stored, if the document can't be opened, if its reader refuses
   it, or if the list or the path is null. */
QXUT_API int32_t UtilDocInfoGet(
    HUTDOCINFO list, const QXWCHAR* path, const QxUtDocumentInfo* info, uint32_t waitSeconds);

/* Returns 1 if the share of a path (\\server\share\..., or a drive that is connected to one) answers. Returns 0 if it
   doesn't, or if it failed to answer earlier in this process; it isn't contacted again then. The check may take as long
   as the system waits for a server. Returns -1 if the path is null or isn't on a share. */
QXUT_API int32_t UtilDocInfoShareAccessibility(const QXWCHAR* path);

QXUT_EXTERN_C_END

#endif
