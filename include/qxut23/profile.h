/* The profile store: a tree of named text values in memory, loaded from a file, a stream or the clipboard, and saved to
   one.

   Terms
     A job is one open profile. A list holds, in the order of their making, leaves (a name and a text value) and further
     lists. Names are compared by code unit, with case, and may repeat; a leaf and a list may have one name.
     A path is names of lists separated by '/', and, where a leaf is meant, its name behind the last '/'. A path that
     begins with '/' starts at the root, any other at the list that is given. A name in front of a '/' counts up to its
     first 255 characters. The empty path is the empty name.

   Handles
     Both are opaque. A null job is the invalid one, which every function takes without harm; a null list is the root. A
     list handle stays valid until that list or one around it is deleted or emptied, or the job is closed, and is for
     its own job only.

   Texts
     Zero-terminated. They stay the caller's; null counts as empty where nothing else is said. Functions with a text
     argument exist twice: ...W takes UTF-16, ...A 8-bit text in the process's default code page, which is converted.
     What a conversion can't express becomes what the system puts in its place.

   Threads
     One job is for one thread at a time; only ProfJobAddRef and ProfJobClose may run beside other calls. Different jobs
     have nothing to do with each other.

   Running out of memory fails the call: with PROF_ERR_STOPPED, or the code that the function names, where there is a
   code, with null or nothing done elsewhere. */
#ifndef QXUT23_PROFILE_H
#define QXUT23_PROFILE_H

#include <qxut23/base.h>

struct IStream;

QXUT_EXTERN_C_BEGIN

typedef struct ProfJobObject* HPROFJOB;
typedef struct ProfListObject* HPROFLIST;

/* Result codes. Each function names those that it gives. */
enum
{
    PROF_OK = 0,
    PROF_ERR_CANNOT_READ = -1,  /* the source is missing, can't be opened, or its name is refused */
    PROF_ERR_CANNOT_WRITE = -3, /* the target or the exclusive source can't be opened or locked */
    PROF_ERR_WRITE_FAILED = -4, /* the profile could not be written */
    PROF_ERR_INVALID_JOB = -5,
    PROF_ERR_NO_LEAF = -6,       /* there is no such leaf */
    PROF_ERR_MALFORMED = -7,     /* the source is not a well-formed profile */
    PROF_ERR_STOPPED = -8,       /* the work stopped early, or memory ran out */
    PROF_ERR_NOT_THAT_TYPE = -9, /* the value is there, but its text isn't one of the asked type */
    PROF_ERR_LOCKED = -10        /* another process keeps the source, or its content could not be fetched */
};

/* Flags of a save: the form in the low four bits, where any value but these means XML, and how it is packed. */
enum
{
    PROF_FORM_TEXT = 0,
    PROF_FORM_XML = 1,
    PROF_FORM_XFDF = 2,
    PROF_SAVE_PACKED = 0x40,
    PROF_SAVE_PACKED_AS_LOADED = 0x80 /* packed if the job was loaded from a packed source */
};

/* ---- Jobs ---- */

/* Opens a job and loads the file `name` into it; with null it is an empty job without a file. The file must exist and
   is closed again when it's loaded. A file that another process keeps to itself is waited for up to 10 seconds. A file
   of 0 bytes is an empty profile; one of 1 to 3 bytes is none.

   A file whose first line is "[/]" holds a profile in its text form. If the first line begins with '[' otherwise, it is
   read as an INI file: the keys of the first section become leaves of the root, and since nothing ends a section there,
   each further section is a list inside the one before it. A file whose first line is that of the XML form or of XFDF
   is read in that form (see below). UTF-16 with a mark, UTF-8 with or without (files of less than 201 bytes only with),
   and 8-bit text in the default code page are told apart by the content.

   A packed file begins with "ZxvQ", behind which one of the other forms follows as raw deflate data (RFC 1951). It is
   unpacked to a temporary file. Damaged data give what comes out of them before the damage; what unpacks to more than
   2 GB is PROF_ERR_LOCKED, as a file of that size is.

   The result is a job in any case but that of no memory (null), with one reference; ask ProfGetError how it went. What
   was read before a failure is in it, but for lists that had not ended. */
QXUT_API HPROFJOB ProfJobOpenA(const char* name);
QXUT_API HPROFJOB ProfJobOpenW(const QXWCHAR* name);

/* The same, but the file is made if it is missing, and stays open until the job is closed: others can read it
   meanwhile, not write it or open it exclusively. ProfSave with a null name writes to it in place. */
QXUT_API HPROFJOB ProfJobOpenExclusiveA(const char* name);
QXUT_API HPROFJOB ProfJobOpenExclusiveW(const QXWCHAR* name);

/* A job on a stream, from its beginning. The stream is held until the job is closed, also when loading failed, and
   ProfSaveToStream with a null stream writes to it. With null it is an empty job without a stream. A stream of fewer
   than 4 bytes is an empty profile. ProfGetError as for a file; PROF_ERR_LOCKED if the stream stays locked or can't be
   fetched whole. */
QXUT_API HPROFJOB ProfJobOpenStream(struct IStream* stream);

/* The same for an object that lies inside a larger stream, from the stream's present position to its end (from its
   beginning if it stands at its end), in the text form without a mark and without a head: the root has the given name
   instead of "/", and its lines are indented as from `level` on, which isn't 0. What ProfSaveToStream writes of such a
   job is one block of that name, so it comes back as a list of that name below the root; to the held stream, too, it
   goes from the beginning. */
QXUT_API HPROFJOB ProfJobOpenStreamObjectA(struct IStream* stream, const char* name, uint32_t level);
QXUT_API HPROFJOB ProfJobOpenStreamObjectW(struct IStream* stream, const QXWCHAR* name, uint32_t level);

/* A job with what the clipboard holds. `window` is a window of the caller's (a HWND), or null, that opens the
   clipboard. PROF_ERR_CANNOT_READ if no temporary file can be made, the clipboard can't be opened or holds no profile;
   otherwise as for a stream. */
QXUT_API HPROFJOB ProfJobOpenClipboard(void* window);

/* Whether the clipboard holds a profile: 1 or 0. */
QXUT_API int32_t ProfIsClipboardDataAvailable(void);

/* One more reference, and one less; the last one frees the job with all its lists, and closes its file. */
QXUT_API void ProfJobAddRef(HPROFJOB job);
QXUT_API void ProfJobClose(HPROFJOB job);

/* How opening and loading went: PROF_OK, PROF_ERR_CANNOT_READ, PROF_ERR_CANNOT_WRITE (exclusive open only),
   PROF_ERR_MALFORMED, PROF_ERR_LOCKED; PROF_ERR_INVALID_JOB. Later calls don't change it. */
QXUT_API int32_t ProfGetError(HPROFJOB job);

/* Writes the job to the file `name`, replacing what it holds; null means the file that the job was opened with. Whoever
   has the file open is waited for up to 10 seconds, and so is any other cause that keeps it from being opened. The job
   isn't changed. A profile without entries makes a file of 0 bytes. `flags` are the PROF_FORM_ and PROF_SAVE_ values
   above.
   PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (there is no target, or no memory for the content),
   PROF_ERR_WRITE_FAILED (the disk is full; the file still holds what it held). The content is written over the old one,
   so a process that is ended meanwhile may leave a file with parts of both.

   PROF_FORM_TEXT and PROF_FORM_XML, both UTF-16, keep the whole tree. Control characters in a text profile, in values,
   come back; those in names come back as their pictures (U+2401 to U+241F). The XML form masks what its markup uses,
   and of line breaks CR, LF and CR LF all come back as CR LF. Both are read line by line: leading blanks of a name are
   lost in a text profile, and tags of the XML form are told by the beginning of a line.

   PROF_FORM_XFDF writes the values of a PDF form for other software (XFDF, ISO 19444-1), in UTF-8 without a mark. Lists
   are fields around fields; reading gives one leaf for each value, named by the names of the fields around it, joined
   by dots, and no list. Names and values are masked: < > & ' " by their names, tabs and line breaks by numbers
   (&#x0009; &#x000a; &#x000d;), so that they come back as they were. What XML can't hold is replaced: other control
   characters by their pictures, halves of surrogate pairs, U+FFFE and U+FFFF by U+FFFD. Of what other software writes,
   tags that begin on one line and end on another aren't understood, and the lines of a value come without their leading
   blanks and without empty lines. Lines that are no UTF-8 are read in the default code page. The names of all leaves
   may have 8,388,608 characters together, and 16 more for each byte of the file: a file of longer ones is
   PROF_ERR_MALFORMED, and a tree of longer ones isn't written (PROF_ERR_CANNOT_WRITE, or PROF_ERR_WRITE_FAILED to a
   stream or the clipboard). */
QXUT_API int32_t ProfSaveA(HPROFJOB job, const char* name, int32_t flags);
QXUT_API int32_t ProfSaveW(HPROFJOB job, const QXWCHAR* name, int32_t flags);

/* Writes the job to a stream, from its beginning to its end, or with null to the stream or file that the job holds. A
   stream without room for it keeps what it holds.
   PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (what the job holds stays locked), PROF_ERR_WRITE_FAILED
   (also without memory for the content, and where there's nothing to write an entry to). */
QXUT_API int32_t ProfSaveToStream(HPROFJOB job, struct IStream* stream, int32_t flags);

/* Adds the job to what the clipboard holds, in the form that `flags` select and never packed, and beside it a line of
   text for programs that show text. `window` as above.
   PROF_OK (also for the invalid job), PROF_ERR_CANNOT_WRITE (no temporary file, or the clipboard can't be opened),
   PROF_ERR_WRITE_FAILED, PROF_ERR_STOPPED (out of global memory). */
QXUT_API int32_t ProfSaveToClipboard(HPROFJOB job, void* window, int32_t flags);

/* `which` 0: the version as one number, 5890 (0x1702); 1: the major one, 23; 2: the minor one, 2; otherwise -1. */
QXUT_API int32_t ProfGetVersion(int32_t which);

/* Writes the list with all below it to the debug output, a line an entry, indented by its depth.
   PROF_OK; PROF_ERR_INVALID_JOB; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfDebugList(HPROFJOB job, HPROFLIST list);

/* Does nothing; kept for callers that have it. */
QXUT_API void ProfSetDebug(void);

/* ---- Lists ----
   Where a list is made, a name that begins with '[' loses that and its last character, whatever that is. */

/* The first list of the path, or null. A null path gives `list` itself; ".." as the path, or as its last component, the
   list around, which the root hasn't. Each component is sought in the first list of the name before it only. */
QXUT_API HPROFLIST ProfGetListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfGetListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* The list of the path, empty: lists that are missing are made behind the others, the first of each name is entered,
   and a last one that was there is emptied. Null for the invalid job. */
QXUT_API HPROFLIST ProfCreateListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfCreateListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* A new list for each component of the path, also where one of that name exists; the last one is the result. Null for
   the invalid job. */
QXUT_API HPROFLIST ProfAppendListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API HPROFLIST ProfAppendListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Removes all entries of the list. */
QXUT_API void ProfEmptyList(HPROFJOB job, HPROFLIST list);

/* Removes every list that has the last name of the path, in every list that the names before it match, beginning at
   `list` also if the path begins with '/'. The empty path removes all entries of `list`, leaves too. With a null path
   `list` itself is removed. */
QXUT_API void ProfDeleteListA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API void ProfDeleteListW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* The same for every leaf that has the last name; the empty path removes all entries of `list`, lists too. A null path
   does nothing. */
QXUT_API void ProfDeleteItemA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API void ProfDeleteItemW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* One entry of a list: `name` and `value` are never null, belong to the tree and are valid during the call only;
   `child` is null for a leaf. The callback may change the tree and remove the entry that it was given, but no other
   entry of the list that is walked. 0 ends the walk. */
typedef int32_t (*ProfEnumCallbackA)(HPROFJOB job, const char* name, const char* value, HPROFLIST child, void* context);
typedef int32_t (*ProfEnumCallbackW)(
    HPROFJOB job, const QXWCHAR* name, const QXWCHAR* value, HPROFLIST child, void* context);

/* Calls back for each entry of the one list, in order. `context` is handed through. 1 if all were visited; 0 if the
   callback ended the walk, is null, or the job is invalid. */
QXUT_API int32_t ProfEnumA(HPROFJOB job, HPROFLIST list, ProfEnumCallbackA callback, void* context);
QXUT_API int32_t ProfEnumW(HPROFJOB job, HPROFLIST list, ProfEnumCallbackW callback, void* context);

/* Appends a deep copy of all entries of the source list to the target list. They may be of one job, and even one list,
   or one inside the other: the copy is of what the source holds when the call begins.
   PROF_OK; PROF_ERR_INVALID_JOB if either job is; PROF_ERR_STOPPED, and nothing is copied. */
QXUT_API int32_t ProfCopyList(HPROFJOB targetJob, HPROFLIST targetList, HPROFJOB sourceJob, HPROFLIST sourceList);

/* ---- Values ---- */

/* Copies the value of the first leaf of the path to `buffer`, which has room for `size` characters, terminator
   included: at most size - 1 characters and always a terminator; with 0 or less nothing is written. Before anything
   else `buffer` gets `defaultValue` in the same way, unless that is the buffer itself; so it holds the default if there
   is no leaf. The full length of the value in UTF-16 characters, so that `size` or more means that it was cut;
   PROF_ERR_NO_LEAF; 0 for the invalid job. An ...A buffer counts bytes. */
QXUT_API int32_t ProfGetStringA(
    HPROFJOB job, HPROFLIST list, const char* path, char* buffer, int32_t size, const char* defaultValue);
QXUT_API int32_t ProfGetStringW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, QXWCHAR* buffer, int32_t size, const QXWCHAR* defaultValue);

/* The length of the value in UTF-16 characters, without a terminator; PROF_ERR_NO_LEAF; 0 for the invalid job. */
QXUT_API int32_t ProfGetStringLengthA(HPROFJOB job, HPROFLIST list, const char* path);
QXUT_API int32_t ProfGetStringLengthW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path);

/* Gives the first leaf of the path the value. Missing lists and a missing leaf are made behind what is there. A null
   path or value does nothing. */
QXUT_API void ProfSetStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value);
QXUT_API void ProfSetStringW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* value);

/* The same, but always a new leaf behind what is there. With a null path it has the empty name. */
QXUT_API void ProfAppendStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value);
QXUT_API void ProfAppendStringW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* value);

/* ---- Embedded files ----
   Binary content as a value: packed text, which compresses it and enciphers it under the pass phrase `key` (convert.h
   tells the form). An empty or null key means no encipherment. A wrong key can't be told: it gives other bytes.

   A set of files is kept as lists named "File.Entry", one a file, each with the leaves "Name" (the file's name without
   its folder) and "Contents" (the packed text). */

/* Appends a leaf with what a file holds from its present position on, as ProfAppendString appends a text. What can't be
   read gives the empty value, and so do 4 GB and more. `fileHandle` is a handle of the system's (CreateFile), open for
   reading; it is taken over and closed at the end, whatever happened. */
QXUT_API void ProfAppendFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle);
QXUT_API void ProfAppendFileW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, void* fileHandle);

/* The same with a stream, which stays the caller's. */
QXUT_API void ProfAppendStreamA(
    HPROFJOB job, HPROFLIST list, const char* path, const char* key, struct IStream* stream);
QXUT_API void ProfAppendStreamW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, struct IStream* stream);

/* Makes the content of the first leaf of the path the whole content of a file, which is open for reading and writing;
   `fileHandle` is taken over and closed at the end.
   PROF_OK (also for the invalid job); PROF_ERR_NO_LEAF; PROF_ERR_WRITE_FAILED if the value is no packed text or can't
   be written; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfGetFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle);
QXUT_API int32_t ProfGetFileW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, void* fileHandle);

/* The same with a stream, which is rewound and stays the caller's. */
QXUT_API int32_t ProfGetStreamA(
    HPROFJOB job, HPROFLIST list, const char* path, const char* key, struct IStream* stream);
QXUT_API int32_t ProfGetStreamW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const QXWCHAR* key, struct IStream* stream);

/* Appends a "File.Entry" to `list` for each file that fits `pattern`, a path whose name may hold * and ?; folders below
   aren't searched. Files that are empty or can't be read get none. The count of files that fit, those included;
   0 for the invalid job; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfAppendFilesA(HPROFJOB job, HPROFLIST list, const char* pattern, const char* key);
QXUT_API int32_t ProfAppendFilesW(HPROFJOB job, HPROFLIST list, const QXWCHAR* pattern, const QXWCHAR* key);

/* Writes the files of all entries of `list` to `directory`, which is made if it is missing (the last folder of the path
   only). A file that is there is replaced, and of two entries with one name the later one stays. Entries that can't be
   written are passed over and logged, and so are names that would lead out of the directory: with a separator or a
   colon, of a device, or where a link stands. The count of files written; 0 for the invalid job, and without an entry,
   when nothing is made; PROF_ERR_WRITE_FAILED if there is no directory and none can be made; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfExtractFilesA(HPROFJOB job, HPROFLIST list, const char* directory, const char* key);
QXUT_API int32_t ProfExtractFilesW(HPROFJOB job, HPROFLIST list, const QXWCHAR* directory, const QXWCHAR* key);

QXUT_EXTERN_C_END

#endif
