/* Binary data as one line of text, and back.
 *
 * Packed text is the Base64 (RFC 4648) form of the data. With compression it is "@2@" followed by the Base64 form of an
 * image that consists of the size, a tag and a zlib stream (RFC 1950). The unpacking functions read both forms and the
 * older "@1@" form. They skip white space between groups of four characters. These functions don't use a pass phrase.
 *
 * Functions that fill a text buffer (`buffer`; `bufferChars` is its size in characters, terminator included):
 *   - With a null buffer or a size of 0, they write nothing and return the required size in characters, terminator
 *     included.
 *   - Otherwise they copy the text, truncate it to the buffer and terminate it. They return 0, or QXUT_CONVERT_CUT if
 *     the text was truncated.
 * Functions that return a BSTR allocate a null string with SysAllocStringLen and replace any other string with
 * SysReAllocStringLen. The caller frees it. `compress`: any value other than 0 compresses. Unless a function says
 * otherwise, a null argument returns QXUT_CONVERT_NULL and nothing is changed.
 */
#ifndef QXUT23_CONVERT_H
#define QXUT23_CONVERT_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The system's stream interface, as declared in the system's own header. */
struct IStream;

/* The address for the text is null, memory ran out, the source can't be read completely, or the buffer is too small. */
#define QXUT_CONVERT_FAILED (-1)
#define QXUT_CONVERT_NULL (-2) /* a null argument, or no stream can be created on the memory block */
#define QXUT_CONVERT_CUT (-44) /* the text was truncated because it did not fit */

/* Packs `size` bytes at `data` into a text buffer. `data` may be null if `size` is 0; the result is the empty text. */
QXUT_API int32_t UtilConvertBLOBToString(
    const void* data, uint32_t size, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);

/* Packs `size` bytes at `data` into a BSTR. Returns 0, or QXUT_CONVERT_FAILED if `text` is null or memory runs out. */
QXUT_API int32_t UtilConvertBLOBToBSTR(const void* data, uint32_t size, QXWCHAR** text, int32_t compress);

/* Unpacks `text` into `data`, a buffer of `size` bytes. Returns the number of bytes. Returns QXUT_CONVERT_FAILED if the
   bytes don't fit; nothing is written then, unless the text ends inside a group of four. Returns QXUT_CONVERT_NULL if
   `text` is null. If `data` is null, only the number of bytes is returned. */
QXUT_API int32_t UtilConvertStringToBLOB(const QXWCHAR* text, void* data, uint32_t size);

/* Pack the whole contents of a stream, regardless of its current position. */
QXUT_API int32_t UtilConvertStreamToString(
    struct IStream* stream, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);
QXUT_API int32_t UtilConvertStreamToBSTR(struct IStream* stream, QXWCHAR** text, int32_t compress);

/* Unpacks `text` to a stream, overwriting it from the beginning. The stream is truncated after the data and rewound. An
   empty text leaves the stream unchanged. Returns 0 or QXUT_CONVERT_NULL. */
QXUT_API int32_t UtilConvertStringToStream(const QXWCHAR* text, struct IStream* stream);

/* Pack the contents of a global memory block (GlobalAlloc). The caller keeps ownership of the block. */
QXUT_API int32_t UtilConvertHGLOBALToString(void* memory, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);
QXUT_API int32_t UtilConvertHGLOBALToBSTR(void* memory, QXWCHAR** text, int32_t compress);

/* Unpacks `text` to a new global memory block, which the caller frees with GlobalFree. If `*memory` already holds a
   block, that block is freed. Returns 0, or QXUT_CONVERT_NULL if `memory` or `text` is null. */
QXUT_API int32_t UtilConvertStringToHGLOBAL(const QXWCHAR* text, void** memory);

QXUT_EXTERN_C_END

#endif
