/* Binary data as one line of text, and back.
 *
 * Packed text is Base64 (RFC 4648) of the data, or, when compression is asked for, "@2@" and Base64 of an image that
 * holds the size, a tag and a zlib stream (RFC 1950). Readers take both, and the older "@1@". White space between
 * groups of four characters is passed over. No pass phrase is used here.
 *
 * Rules of the functions that fill a text buffer (`buffer`, `bufferChars`: its size in characters, terminator
 * included):
 *   - a null buffer or a size of 0 gives the needed size in characters, terminator included, and writes nothing;
 *   - otherwise the text is copied, cut to the size and terminated: 0, or QXUT_CONVERT_CUT if it was cut.
 * Rules of the functions that give a BSTR: a null string is allocated with SysAllocStringLen, any other is replaced
 * with SysReAllocStringLen; the caller frees it. `compress`: any value but 0 compresses. A null argument that the table
 * of results below does not name gives QXUT_CONVERT_NULL and touches nothing.
 */
#ifndef QXUT23_CONVERT_H
#define QXUT23_CONVERT_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The system's stream interface, as its own header declares it. */
struct IStream;

/* No address for the text, no memory for it, a source that can't be read whole, or more data than room. */
#define QXUT_CONVERT_FAILED (-1)
#define QXUT_CONVERT_NULL (-2) /* a null argument, or no stream can be made on the memory */
#define QXUT_CONVERT_CUT (-44) /* the text did not fit and was cut */

/* Packs `size` bytes at `data` (may be null when `size` is 0: the empty text). */
QXUT_API int32_t UtilConvertBLOBToString(
    const void* data, uint32_t size, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);

/* The same into a BSTR: 0, or QXUT_CONVERT_FAILED for a null `text` or without memory. */
QXUT_API int32_t UtilConvertBLOBToBSTR(const void* data, uint32_t size, QXWCHAR** text, int32_t compress);

/* Unpacks to `data`, which has room for `size` bytes: the count of bytes, QXUT_CONVERT_FAILED when they do not fit
   (nothing is written then, unless the text ends inside a group of four), QXUT_CONVERT_NULL for a null text. A null
   `data` gives the count alone. */
QXUT_API int32_t UtilConvertStringToBLOB(const QXWCHAR* text, void* data, uint32_t size);

/* Packs all of a stream, whatever its position. */
QXUT_API int32_t UtilConvertStreamToString(
    struct IStream* stream, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);
QXUT_API int32_t UtilConvertStreamToBSTR(struct IStream* stream, QXWCHAR** text, int32_t compress);

/* Unpacks to a stream, from its beginning on; the stream is cut behind the data and rewound. An empty text leaves it as
   it is. 0, or QXUT_CONVERT_NULL. */
QXUT_API int32_t UtilConvertStringToStream(const QXWCHAR* text, struct IStream* stream);

/* Packs the contents of a global memory block (GlobalAlloc), which stays the caller's. */
QXUT_API int32_t UtilConvertHGLOBALToString(void* memory, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress);
QXUT_API int32_t UtilConvertHGLOBALToBSTR(void* memory, QXWCHAR** text, int32_t compress);

/* Unpacks to a new global memory block, which the caller frees with GlobalFree. A block that `*memory` holds is freed
   first. 0, or QXUT_CONVERT_NULL for a null `memory` or `text`. */
QXUT_API int32_t UtilConvertStringToHGLOBAL(const QXWCHAR* text, void** memory);

QXUT_EXTERN_C_END

#endif
