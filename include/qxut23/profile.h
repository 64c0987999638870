/* The profile store: a tree of named text values in memory, loaded from and saved to a file, a stream or the clipboard.

   Terms
     A job is one open profile. A list contains leaves (a name and a text value) and further lists, in the order in
     which they were created. Names are compared by code unit, are case-sensitive and may repeat; a leaf and a list may
     have the same name.
     A path consists of list names separated by '/'. If it refers to a leaf, the leaf's name follows the last '/'. A
     path that begins with '/' starts at the root, any other path at the given list. Of a name followed by '/', only the
     first 255 characters are significant. The empty path refers to the entry with the empty name.

   Handles
     Handles are opaque. A null job is the invalid job, which every function accepts and ignores; a null list is the
     root. A list handle is valid until that list or an enclosing list is deleted or emptied, or the job is closed. It
     must be used with its own job only.

   Texts
     Texts are zero-terminated and remain the caller's. Null counts as the empty text unless a function says otherwise.
     Each function with a text argument exists twice: ...W takes UTF-16, ...A takes 8-bit text in the process's default
     code page and converts it. Characters that a conversion can't represent are replaced by the system's substitute.

   Threads
     A job may be used by one thread at a time; only ProfJobAddRef and ProfJobClose may run concurrently with other
     calls. Different jobs are independent.

   If memory runs out, the call fails. Functions that return a code return PROF_ERR_STOPPED or the code that their
   description names; others return null or do nothing. */
#ifndef QXUT23_PROFILE_H
#define QXUT23_PROFILE_H

#include <qxut23/base.h>

struct IStream;

QXUT_EXTERN_C_BEGIN

typedef struct ProfJobObject* HPROFJOB;
typedef struct ProfListObject* HPROFLIST;

/* Result codes. Each function lists the codes that it returns. */
enum
{
    PROF_OK = 0,
    PROF_ERR_CANNOT_READ = -1,  /* the source is missing, can't be opened, or has an unacceptable name */
    PROF_ERR_CANNOT_WRITE = -3, /* the target or the exclusive source can't be opened or locked */
    PROF_ERR_WRITE_FAILED = -4, /* the profile could not be written */
    PROF_ERR_INVALID_JOB = -5,
    PROF_ERR_NO_LEAF = -6,       /* the leaf doesn't exist */
    PROF_ERR_MALFORMED = -7,     /* the source is not a well-formed profile */
    PROF_ERR_STOPPED = -8,       /* the operation stopped early, or memory ran out */
    PROF_ERR_NOT_THAT_TYPE = -9, /* the leaf exists, but its text is not of the requested type */
    PROF_ERR_LOCKED = -10        /* another process has locked the source, or its contents can't be read */
};

/* Flags of a save: the form in the low four bits (any value not listed means XML), and whether to pack. */
enum
{
    PROF_FORM_TEXT = 0,
    PROF_FORM_XML = 1,
    PROF_FORM_XFDF = 2,
    PROF_SAVE_PACKED = 0x40,
    PROF_SAVE_PACKED_AS_LOADED = 0x80 /* pack if the job was loaded from a packed source */
};

/* ---- Jobs ---- */

/* Opens a job and loads the file `name` into it. With null, the job is empty and has no file. The file must exist; it
   is closed after loading. If another process has the file open exclusively, the function waits for up to 10 seconds. A
   file of 0 bytes is an empty profile; a file of 1 to 3 bytes is not a profile.

   A file whose first line is "[/]" is a profile in the text form. If the first line begins with '[' but is not "[/]",
   the file is read as an INI file: the keys of the first section become leaves of the root. Since nothing ends a
   section in this syntax, each further section becomes a list inside the previous one. A file that begins with the
   first line of the XML form or of XFDF is read in that form (see ProfSave). The encoding is detected from the
   contents: UTF-16 with a byte order mark, UTF-8 with or without one (in files of less than 201 bytes only with one),
   or 8-bit text in the default code page.

   A packed file consists of "ZxvQ" and one of the other forms as raw deflate data (RFC 1951). It is unpacked to a
   temporary file. If the data is damaged, everything that can be decompressed before the damage is read. If it would
   take more memory than 64 times the size of the file (but at least 64 MB), or more than 2 GB of text, it isn't read
   and the error is PROF_ERR_LOCKED, as for an unpacked file of more than 2 GB. QxProfJobOpen (profile_source.h) lifts
   the first limit.

   Returns a job with one reference even if opening or loading fails; call ProfGetError for the outcome. Returns null
   only if memory runs out. After a failure the job contains everything read before it, except lists that had not ended.
 */
QXUT_API HPROFJOB ProfJobOpenA(const char* name);
QXUT_API HPROFJOB ProfJobOpenW(const QXWCHAR* name);

/* The same, but the file is created if it is missing, and it stays open until the job is closed. Meanwhile others can
   read it but can't write it or open it exclusively. ProfSave with a null name writes the file in place. */
QXUT_API HPROFJOB ProfJobOpenExclusiveA(const char* name);
QXUT_API HPROFJOB ProfJobOpenExclusiveW(const QXWCHAR* name);

/* Opens a job and loads it from a stream, from the stream's beginning. The job holds the stream until it is closed,
   even if loading fails, and ProfSaveToStream with a null stream writes to it. With null, the job is empty and has no
   stream. A stream of fewer than 4 bytes is an empty profile. The errors are those of files; PROF_ERR_LOCKED means that
   the stream stays locked or can't be read completely. */
QXUT_API HPROFJOB ProfJobOpenStream(struct IStream* stream);

/* The same for an object embedded in a larger stream. It extends from the stream's current position to the end, or
   covers the whole stream if the current position is the end. It is in the text form without a byte order mark and
   without a head line: the root has the given name instead of "/", and its lines are indented starting at `level`,
   which must not be 0. ProfSaveToStream writes such a job as one block with that name, so it is read back as a list
   with that name below the root. It writes from the beginning of the stream, even for the held stream. */
QXUT_API HPROFJOB ProfJobOpenStreamObjectA(struct IStream* stream, const char* name, uint32_t level);
QXUT_API HPROFJOB ProfJobOpenStreamObjectW(struct IStream* stream, const QXWCHAR* name, uint32_t level);

/* Opens a job and loads the clipboard's contents. `window` is the caller's window (an HWND) that opens the clipboard,
   or null. The error is PROF_ERR_CANNOT_READ if no temporary file can be created, or if the clipboard can't be opened
   or contains no profile; otherwise errors are those of a stream. */
QXUT_API HPROFJOB ProfJobOpenClipboard(void* window);

/* Returns 1 if the clipboard contains a profile, otherwise 0. */
QXUT_API int32_t ProfIsClipboardDataAvailable(void);

/* Add and release a reference. Releasing the last reference frees the job with all its lists and closes its file. */
QXUT_API void ProfJobAddRef(HPROFJOB job);
QXUT_API void ProfJobClose(HPROFJOB job);

/* Returns the outcome of opening and loading: PROF_OK, PROF_ERR_CANNOT_READ, PROF_ERR_CANNOT_WRITE (exclusive jobs
   only), PROF_ERR_MALFORMED, PROF_ERR_LOCKED, or PROF_ERR_INVALID_JOB. Later calls don't change it. */
QXUT_API int32_t ProfGetError(HPROFJOB job);

/* Writes the job to the file `name`, replacing its contents. Null means the file with which the job was opened. If
   the file can't be opened, for example because another process has it open, the function retries for up to 10 seconds.
   The job is not changed. A profile without entries is written as a file of 0 bytes. `flags` are the PROF_FORM_ and
   PROF_SAVE_ values above.
   Returns PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (there is no target, or not enough memory for the
   contents) or PROF_ERR_WRITE_FAILED (the disk is full; the file keeps its old contents).
   On linux a save writes a new file ".NAME.qxsave" beside the target (long names are shortened) and replaces the target
   with it, so the target contains either the old or the new contents, even if the process is killed. An existing file
   of that name is treated as left over from a killed process and removed.
   The contents are written over the old ones if the file can't be replaced: if it has several names (hard links), if
   its folder can't be written, and always on windows, which can't replace an open file. A process killed during such a
   save may leave a file with parts of both. If another process has removed or replaced the file of an exclusive job,
   the result is PROF_ERR_CANNOT_WRITE on linux.

   PROF_FORM_TEXT and PROF_FORM_XML, both UTF-16, preserve the whole tree. In the text form, control characters in
   values are preserved; control characters in names are read back as their Unicode pictures (U+2401 to U+241F). The XML
   form masks the characters of its markup, and the line breaks CR, LF and CR LF are all read back as CR LF. Both forms
   are read line by line: names in the text form lose leading blanks, and the XML form recognises tags only at the
   beginning of a line.

   PROF_FORM_XFDF writes the values of a PDF form for other software (XFDF, ISO 19444-1), in UTF-8 without a byte order
   mark. Lists become fields that contain fields. Reading produces one leaf for each value and no lists; a leaf's name
   consists of the names of the enclosing fields joined by dots. Names and values are masked so that they are read back
   unchanged: < > & ' " as named entities, tabs and line breaks as numeric ones (&#x0009; &#x000a; &#x000d;). Characters
   that XML can't represent are replaced: other control characters by their Unicode pictures, unpaired surrogates,
   U+FFFE and U+FFFF by U+FFFD. In files from other software, a tag that spans several lines is not recognised, and a
   value loses its empty lines and the leading blanks of its lines. Lines that are not valid UTF-8 are read in the
   default code page. The names of all leaves together may have 8,388,608 characters plus 16 for each byte of the file.
   Reading a file that exceeds this limit fails with PROF_ERR_MALFORMED; a tree that exceeds it isn't written
   (PROF_ERR_CANNOT_WRITE, or PROF_ERR_WRITE_FAILED for a stream or the clipboard). */
QXUT_API int32_t ProfSaveA(HPROFJOB job, const char* name, int32_t flags);
QXUT_API int32_t ProfSaveW(HPROFJOB job, const QXWCHAR* name, int32_t flags);

/* Writes the job to a stream and truncates it after the data. With null, writes to the stream or file that the job
   holds. If the stream has no room for the data, it keeps its old contents.
   Returns PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (the held stream or file stays locked) or
   PROF_ERR_WRITE_FAILED (also if there is not enough memory for the contents, or if there are entries but nothing to
   write them to). */
QXUT_API int32_t ProfSaveToStream(HPROFJOB job, struct IStream* stream, int32_t flags);

/* Adds the job to the clipboard, in the form selected by `flags` but never packed, together with a line of text for
   programs that show text. `window` is the caller's window that opens the clipboard, or null.
   Returns PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (no temporary file can be created, or the clipboard
   can't be opened), PROF_ERR_WRITE_FAILED or PROF_ERR_STOPPED (out of global memory). */
QXUT_API int32_t ProfSaveToClipboard(HPROFJOB job, void* window, int32_t flags);

/* Returns the version for `which` 0 as one number, 5890 (0x1702); for 1 the major number, 23; for 2 the minor number,
   2; otherwise -1. */
QXUT_API int32_t ProfGetVersion(int32_t which);

/* Writes the list and everything below it to the debug output, one line for each entry, indented by depth.
   Returns PROF_OK, PROF_ERR_INVALID_JOB or PROF_ERR_STOPPED. */
QXUT_API int32_t ProfDebugList(HPROFJOB job, HPROFLIST list);

/* Does nothing. Kept for compatibility with existing callers. */
QXUT_API void ProfSetDebug(void);

/* ---- Lists ----
   When a list is created with a name that begins with '[', the '[' and the last character of the name, whatever it is,
   are removed. */

/* Returns the first list with the path, or null. A null path returns `list` itself. ".." as the path, or as its last
   component, returns the enclosing list, or null at the root. Each component is looked up only in the first list with
   the preceding name. */
QXUT_API HPROFLIST ProfGetListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfGetListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Returns the list with the path, emptied. Missing lists are created after the existing entries; where a list exists,
   the first one with the name is used. If the last list already exists, its entries are removed. Returns null for the
   invalid job. */
QXUT_API HPROFLIST ProfCreateListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfCreateListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Creates a new list for each component of the path, even where a list with that name exists, and returns the last one.
   Returns null for the invalid job. */
QXUT_API HPROFLIST ProfAppendListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfAppendListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Removes all entries of the list. */
QXUT_API void ProfEmptyList(HPROFJOB job, HPROFLIST list);

/* Removes every list named like the last component of the path from every list that matches the components before it.
   The search begins at `list` even if the path begins with '/'. The empty path removes all entries of `list`, including
   leaves. A null path removes `list` itself. */
QXUT_API void ProfDeleteListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API void ProfDeleteListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* The same for every leaf named like the last component of the path. The empty path removes all entries of `list`,
   including lists. A null path does nothing. */
QXUT_API void ProfDeleteItemA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API void ProfDeleteItemW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Receives one entry of a list. `name` and `value` are never null, belong to the tree and are valid only during the
   call. `child` is null for a leaf. The callback may change the tree and may remove the entry it received, but no other
   entry of the enumerated list. Returning 0 ends the enumeration. */
typedef int32_t (*ProfEnumCallbackA)(HPROFJOB job, const char* name, const char* value, HPROFLIST child, void* context);
typedef int32_t (*ProfEnumCallbackW)(
    HPROFJOB job, const QXWCHAR* name, const QXWCHAR* value, HPROFLIST child, void* context);

/* Calls `callback` for each entry of the list, in order, without descending into child lists. `context` is passed
   through. Returns 1 if all entries were visited. Returns 0 if the callback ended the enumeration or is null, or if the
   job is invalid. */
QXUT_API int32_t ProfEnumA(HPROFJOB job, HPROFLIST list, ProfEnumCallbackA callback, void* context);
QXUT_API int32_t ProfEnumW(HPROFJOB job, HPROFLIST list, ProfEnumCallbackW callback, void* context);

/* Appends a deep copy of all entries of the source list to the target list. Both may belong to the same job, be the
   same list, or be nested: the copy contains what the source contained when the call began.
   Returns PROF_OK; PROF_ERR_INVALID_JOB if either job is invalid; PROF_ERR_STOPPED, with nothing copied. */
QXUT_API int32_t ProfCopyList(HPROFJOB targetJob, HPROFLIST targetList, HPROFJOB sourceJob, HPROFLIST sourceList);

/* ---- Values ---- */

/* Copies the value of the first leaf with the path to `buffer`, which has room for `size` characters, terminator
   included. Writes at most size - 1 characters and always a terminator; if `size` is 0 or negative, writes nothing.
   `defaultValue` is copied to `buffer` first in the same way, unless it is the buffer itself, so the buffer holds the
   default if the leaf doesn't exist. Returns the full length of the value in UTF-16 characters (a result of `size` or
   more means that the value was truncated), PROF_ERR_NO_LEAF, or 0 for the invalid job. The ...A form counts the buffer
   in bytes. */
QXUT_API int32_t ProfGetStringA(
    HPROFJOB job, HPROFLIST list, const char* path, char* buffer, int32_t size, const char* defaultValue);
QXUT_API int32_t ProfGetStringW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, QXWCHAR* buffer, int32_t size, const QXWCHAR* defaultValue);

/* Returns the length of the value in UTF-16 characters, without the terminator; PROF_ERR_NO_LEAF; 0 for the invalid
   job. */
QXUT_API int32_t ProfGetStringLengthA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API int32_t ProfGetStringLengthW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Assigns the value to the first leaf with the path. Missing lists and a missing leaf are created after the existing
   entries. Does nothing if the path or the value is null. */
QXUT_API void ProfSetStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value);
QXUT_API void ProfSetStringW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* value);

/* The same, but always adds a new leaf after the existing entries. With a null path the leaf's name is empty. */
QXUT_API void ProfAppendStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value);
QXUT_API void ProfAppendStringW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* value);

/* ---- Embedded files ----
   Binary contents stored as a value: packed text (see convert.h), compressed, and encrypted with the pass phrase `key`.
   An empty or null key means no encryption. A wrong key is not detected; it produces different bytes
   (QxProfExtractFiles detects it). The cipher, Blowfish without chaining, hides the contents from casual readers; don't
   rely on it for more.

   The cipher uses the first 72 bytes of the key's form in the process's default code page. A character that the code
   page can't represent becomes a substitute such as "?", so that keys which differ only in such characters open the
   same file; a warning is logged. QxIsPassPhraseExact (packed_text.h) finds such keys. The library erases its own
   copies of a key from memory before a function returns.

   A set of files is stored as lists named "File.Entry", one for each file, each with the leaves "Name" (the file name
   without its folder) and "Contents" (the packed text). */

/* Appends a leaf with the contents of a file from its current position, like ProfAppendString. If the file can't be
   read, or has 4 GB or more, the value is empty. `fileHandle` is a system handle (CreateFile) open for reading; the
   function takes ownership and always closes it. */
QXUT_API void ProfAppendFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle);
QXUT_API void ProfAppendFileW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, void* fileHandle);

/* The same with a stream. The caller keeps its reference. */
QXUT_API void ProfAppendStreamA(
    HPROFJOB job, HPROFLIST list, const char* path, const char* key, struct IStream* stream);
QXUT_API void ProfAppendStreamW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, struct IStream* stream);

/* Replaces the whole contents of a file with the unpacked value of the first leaf with the path. `fileHandle` must be
   open for reading and writing; the function takes ownership and closes it.
   Returns PROF_OK (also for the invalid job), PROF_ERR_NO_LEAF, PROF_ERR_WRITE_FAILED (the value is not packed text, or
   can't be written) or PROF_ERR_STOPPED. */
QXUT_API int32_t ProfGetFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle);
QXUT_API int32_t ProfGetFileW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, void* fileHandle);

/* The same with a stream, which is rewound. The caller keeps its reference. */
QXUT_API int32_t ProfGetStreamA(
    HPROFJOB job, HPROFLIST list, const char* path, const char* key, struct IStream* stream);
QXUT_API int32_t ProfGetStreamW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, struct IStream* stream);

/* Appends a "File.Entry" to `list` for each file that matches `pattern`, a path whose last component may contain * and
   ?. Subfolders are not searched. Empty and unreadable files get no entry. Returns the number of matching files,
   including empty and unreadable ones; 0 for the invalid job; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfAppendFilesA(HPROFJOB job, HPROFLIST list, const char* pattern, const char* key);
QXUT_API int32_t ProfAppendFilesW(HPROFJOB job, HPROFLIST list, const QXWCHAR* pattern, const QXWCHAR* key);

/* Writes the files of all entries of `list` to `directory`. If the folder is missing, it is created, but only the last
   component of the path. Existing files are replaced; if two entries have the same name, the later one wins. Entries
   that can't be written are skipped and logged, as are names that would lead out of the folder: names with a separator
   or a colon, device names, and names for which a link exists. Returns the number of files written; 0 for the invalid
   job; 0 if there are no entries, without creating the folder; PROF_ERR_WRITE_FAILED if the folder can't be created;
   PROF_ERR_STOPPED. */
QXUT_API int32_t ProfExtractFilesA(HPROFJOB job, HPROFLIST list, const char* directory, const char* key);
QXUT_API int32_t ProfExtractFilesW(HPROFJOB job, HPROFLIST list, const QXWCHAR* directory, const QXWCHAR* key);

QXUT_EXTERN_C_END

#endif
