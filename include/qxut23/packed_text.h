/* Unpacks packed text (convert.h) with strict checks, and checks pass phrases. */
#ifndef QXUT23_PACKED_TEXT_H
#define QXUT23_PACKED_TEXT_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Result codes of QxUnpackText. */
enum
{
    QXUT_UNPACK_OK = 0,
    QXUT_UNPACK_NOT_PACKED = -1,    /* not packed text: a character outside Base64, or an impossible length */
    QXUT_UNPACK_WRONG_KEY = -2,     /* the key is wrong or missing, or the text is damaged, which looks the same */
    QXUT_UNPACK_NOT_ENCRYPTED = -3, /* there is a key, but the text is not encrypted */
    QXUT_UNPACK_DAMAGED = -4,       /* the data doesn't have the stored size, or more text follows it */
    QXUT_UNPACK_NO_MEMORY = -5,
    QXUT_UNPACK_STOPPED = -6 /* by the function that receives the data */
};

/* Receives all the data at once; it is valid during the call. Returns 0 if it could not store the data. It must not
   throw. */
typedef int32_t (*QxUnpackedData)(void* context, const void* data, uint32_t size);

/* Unpacks a zero-terminated text and passes the data to `receive`, which may be null, together with `context`.
   Accepts only what packing can have produced: whole groups of Base64 (RFC 4648, section 4) with zero bits before the
   padding, the tag, compressed data of exactly the stored size, and nothing after it. Blanks, tabs and line breaks are
   skipped everywhere. Null and the empty text contain no data; `receive` is called with size 0.

   A null or empty `key` means no encryption. A wrong key is detected if the text is compressed, as embedded files
   always are. Without compression a wrong key can't be detected, and the data is meaningless.

   Returns a QXUT_UNPACK code. QxGetErrorText (errors.h) describes a failure. */
QXUT_API int32_t QxUnpackText(const QXWCHAR* text, const QXWCHAR* key, QxUnpackedData receive, void* context);

/* Returns 1 if the process's default code page can represent each character of the key, otherwise 0. A key with result
   0 isn't the only one that opens its files (see profile.h), so it is better to choose another one. Returns 0 if memory
   runs out. */
QXUT_API int32_t QxIsPassPhraseExact(const QXWCHAR* key);

QXUT_EXTERN_C_END

#endif
