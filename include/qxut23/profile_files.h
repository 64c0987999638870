/* Extracts the embedded files of a profile like ProfExtractFiles (profile.h), but checks their contents and reports why
 * a file was not extracted.
 */
#ifndef QXUT23_PROFILE_FILES_H
#define QXUT23_PROFILE_FILES_H

#include <qxut23/base.h>
#include <qxut23/profile.h>

QXUT_EXTERN_C_BEGIN

/* Why a file was not extracted. */
enum
{
    QXUT_FILE_NO_NAME = 0,
    QXUT_FILE_NAME_REFUSED = 1, /* the name is not allowed, or leads out of the folder */
    QXUT_FILE_NO_CONTENTS = 2,
    QXUT_FILE_WRONG_KEY = 3, /* or damage, which looks the same, or a key was passed for a file that isn't encrypted */
    QXUT_FILE_DAMAGED = 4,
    QXUT_FILE_CANNOT_WRITE = 5
};

/* Receives a file that was not extracted: its name, a QXUT_FILE code, and a description that can follow the name. The
   texts are valid during the call. It must not throw. */
typedef void (*QxFileProblem)(void* context, const QXWCHAR* name, int32_t reason, const QXWCHAR* description);

/* Extracts files like ProfExtractFiles, but unpacks them as strictly as QxUnpackText (packed_text.h): a file that can't
   be unpacked with this key is neither created nor replaced. `problem` is called with `context` for each file that was
   not extracted; it may be null. Returns the number of files written; 0 for the invalid job; PROF_ERR_WRITE_FAILED if
   the folder can't be created; PROF_ERR_STOPPED if memory runs out. */
QXUT_API int32_t QxProfExtractFiles(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* directory, const QXWCHAR* key, QxFileProblem problem, void* context);

QXUT_EXTERN_C_END

#endif
