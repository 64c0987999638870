/* Functions on zero-terminated texts in the caller's buffers, and pointer tests. Nothing is allocated: the caller owns
   every buffer and makes sure that results fit. Lengths, counts and positions are in characters (UTF-16 code units).

   A null text that is only read counts as the empty text. A null buffer is left alone, and a function that returns the
   buffer returns null. Unless a function says otherwise, its texts must not overlap. */
#ifndef QXUT23_STRINGS_H
#define QXUT23_STRINGS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Returns the length of `text` without the terminator, or 0 for null. */
QXUT_API size_t UtilStrlen(const QXWCHAR* text);

/* Returns the length of `text` as a 32-bit value. `context` is ignored and may be null. */
QXUT_API uint32_t UtilSafeStrlen(const void* context, const QXWCHAR* text);

/* Copy `source` to `target`, or append it to the text in `target`, with the terminator. `target` must have room for the
   result. The texts may overlap. Both return `target`. */
QXUT_API QXWCHAR* UtilStrcpy(QXWCHAR* target, const QXWCHAR* source);
QXUT_API QXWCHAR* UtilStrcat(QXWCHAR* target, const QXWCHAR* source);

/* Copies at most `size` - 1 characters of `source` to `target`, a buffer of `size` characters, and always writes a
   terminator. A `size` of 0 writes nothing. Returns `target`. */
QXUT_API QXWCHAR* UtilStrncpy(QXWCHAR* target, const QXWCHAR* source, size_t size);

/* Compares by code unit. Returns -1 if `a` comes first, 0 if the texts are equal, 1 if `b` comes first. */
QXUT_API int UtilStrcmp(const QXWCHAR* a, const QXWCHAR* b);

/* Compare without regard to the case of the letters A to Z, compare at most `count` characters, or both. All return a
   negative value if `a` comes first, 0 if the texts are equal, a positive value if `b` comes first. UtilLocaleStricmp
   and related functions (charset.h) compare by the rules of a language. */
QXUT_API int UtilStricmp(const QXWCHAR* a, const QXWCHAR* b);
QXUT_API int UtilStrncmp(const QXWCHAR* a, const QXWCHAR* b, size_t count);
QXUT_API int UtilStrnicmp(const QXWCHAR* a, const QXWCHAR* b, size_t count);

/* Return the first or the last occurrence of the character `c` in `text`, or null. `c` may be the terminator. */
QXUT_API QXWCHAR* UtilStrchr(const QXWCHAR* text, QXWCHAR c);
QXUT_API QXWCHAR* UtilStrrchr(const QXWCHAR* text, QXWCHAR c);

/* Returns the first occurrence of `part` in `text`, or null. An empty `part` is found at the beginning. */
QXUT_API QXWCHAR* UtilStrstr(const QXWCHAR* text, const QXWCHAR* part);

/* Copy `count` bytes from `source` to `target` (which must not overlap), or set `count` bytes to the low 8 bits of
   `value`. If `count` is 0, the pointers may have any value; otherwise a null pointer makes the call do nothing. Both
   return `target`. */
QXUT_API void* UtilMemcpy(void* target, const void* source, size_t count);
QXUT_API void* UtilMemset(void* target, int value, size_t count);

/* Remove blanks (U+0020 only; tabs and other white space are kept) in place from the beginning, from the end, or from
   both ends. All return `text`. */
QXUT_API QXWCHAR* UtilLtrim(QXWCHAR* text);
QXUT_API QXWCHAR* UtilRtrim(QXWCHAR* text);
QXUT_API QXWCHAR* UtilAtrim(QXWCHAR* text);

/* Removes `count` characters at position `pos` of `text`, counted from 1, and inserts `insert` in their place. `count`
   is limited to the available characters; a negative `count` removes none. A null or empty `insert` inserts nothing.
   `text` must have room for the result. Does nothing if `pos` is below 1 or more than one past the last character.
   Returns `text`. */
QXUT_API QXWCHAR* UtilStuff(QXWCHAR* text, int32_t pos, int32_t count, const QXWCHAR* insert);

/* Truncates `text` in place to at most `count` characters starting at position `pos`, counted from 1. A negative `pos`
   counts from the end (-1 is the last character). A `count` of -1 leaves the text unchanged, whatever the value of
   `pos`. Any other negative `count`, a `pos` of 0, and a `pos` whose absolute value exceeds the length produce the
   empty text. Returns `text`. */
QXUT_API QXWCHAR* UtilSubstr(QXWCHAR* text, int32_t pos, int32_t count);

/* Formats into `buffer`, which has room for `size` characters. Writes at most `size` - 1 characters and always a
   terminator. The format dialect is the same on all systems: %s and %ws are wide text, %hs is 8-bit text, %I64d a
   64-bit integer, %ld a 32-bit integer. Returns the number of characters written without the terminator, or a negative
   value if the text was truncated. If `size` is 0, or `buffer` or `format` is null, nothing is written and the result
   is negative. */
QXUT_API int UtilSafeSprintf(QXWCHAR* buffer, size_t size, const QXWCHAR* format, ...);

/* Kept for compatibility with callers that test whether a pointer can be read, read as a text, or written. All pointers
   are accepted, including null. All return 1. */
QXUT_API int UtilIsRPtr(const void* pointer);
QXUT_API int UtilIsString(const QXWCHAR* text);
QXUT_API int UtilIsWPtr(void* pointer);

QXUT_EXTERN_C_END

#endif
