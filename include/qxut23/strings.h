/* Zero-terminated texts in buffers of the caller, and tests of pointers. Nothing is allocated: the caller owns every
   buffer and sees to it that a result fits. Lengths, counts and positions are in characters (UTF-16 code units).

   A null text that is only read counts as the empty text. A null buffer is left alone, and where the result is that
   buffer it is null. Unless a function says so, its texts may not overlap. */
#ifndef QXUT23_STRINGS_H
#define QXUT23_STRINGS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The length of `text`, terminator not counted; 0 for null. */
QXUT_API size_t UtilStrlen(const QXWCHAR* text);

/* The length of `text` as a value of 32 bits. `context` is ignored and may be null. */
QXUT_API uint32_t UtilSafeStrlen(const void* context, const QXWCHAR* text);

/* Copy `source` to `target`, or append it to the text there, with the terminator. `target` must have room for that. The
   texts may overlap. The result is `target`. */
QXUT_API QXWCHAR* UtilStrcpy(QXWCHAR* target, const QXWCHAR* source);
QXUT_API QXWCHAR* UtilStrcat(QXWCHAR* target, const QXWCHAR* source);

/* Copies `source` to `target`, a buffer of `size` characters: at most `size` - 1 characters, and always the terminator.
   A `size` of 0 writes nothing. The result is `target`. */
QXUT_API QXWCHAR* UtilStrncpy(QXWCHAR* target, const QXWCHAR* source, size_t size);

/* Compares by the value of the code units: -1 if `a` comes first, 0 if they are equal, 1 if `b` comes first. */
QXUT_API int UtilStrcmp(const QXWCHAR* a, const QXWCHAR* b);

/* Compare at most `count` characters, without case (of the letters A to Z), or both. The result is below 0 if `a` comes
   first, 0 if they are equal, above 0 if `b` comes first. UtilLocaleStricmp and its kin compare by language. */
QXUT_API int UtilStricmp(const QXWCHAR* a, const QXWCHAR* b);
QXUT_API int UtilStrncmp(const QXWCHAR* a, const QXWCHAR* b, size_t count);
QXUT_API int UtilStrnicmp(const QXWCHAR* a, const QXWCHAR* b, size_t count);

/* The first or the last occurrence of the character `c` in `text`, or null. The terminator can be searched too. */
QXUT_API QXWCHAR* UtilStrchr(const QXWCHAR* text, QXWCHAR c);
QXUT_API QXWCHAR* UtilStrrchr(const QXWCHAR* text, QXWCHAR c);

/* The first occurrence of `part` in `text`, or null. An empty `part` is found at the beginning. */
QXUT_API QXWCHAR* UtilStrstr(const QXWCHAR* text, const QXWCHAR* part);

/* Copy `count` bytes from `source` to `target` (which may not overlap), or fill `count` bytes with the low 8 bits of
   `value`. With 0 for `count` the pointers may be anything; else a null pointer does nothing. The result is `target`.
 */
QXUT_API void* UtilMemcpy(void* target, const void* source, size_t count);
QXUT_API void* UtilMemset(void* target, int value, size_t count);

/* Remove the blanks (U+0020 only: tabs and other white space stay) in place from the beginning, from the end, or from
   both. The result is `text`. */
QXUT_API QXWCHAR* UtilLtrim(QXWCHAR* text);
QXUT_API QXWCHAR* UtilRtrim(QXWCHAR* text);
QXUT_API QXWCHAR* UtilAtrim(QXWCHAR* text);

/* Removes `count` characters (at most what there is; none if it is negative) at the position `pos` of `text`, counted
   from 1, and puts `insert` in their place; null or empty inserts nothing. `text` must have room for the result. A
   `pos` below 1, or more than one behind the last character, does nothing. The result is `text`. */
QXUT_API QXWCHAR* UtilStuff(QXWCHAR* text, int32_t pos, int32_t count, const QXWCHAR* insert);

/* Cuts `text` down, in place, to at most `count` characters from the position `pos` on, counted from 1; a negative
   `pos` counts from the end (-1 is the last character). A `count` of -1 leaves the text as it is, whatever `pos` says;
   another negative `count`, a `pos` of 0, and one whose absolute value is greater than the length give the empty text.
   The result is `text`. */
QXUT_API QXWCHAR* UtilSubstr(QXWCHAR* text, int32_t pos, int32_t count);

/* Formats into `buffer`, which has room for `size` characters: at most `size` - 1 characters, and always the
   terminator. The dialect of `format` is the same on all systems: %s and %ws take wide text, %hs 8-bit text, %I64d an
   integer of 64 bits, %ld one of 32 bits. The result is the number of characters written, terminator not counted, or
   negative if the text was cut. A `size` of 0, or null for `buffer` or `format`, writes nothing and gives a negative
   result. */
QXUT_API int UtilSafeSprintf(QXWCHAR* buffer, size_t size, const QXWCHAR* format, ...);

/* Kept for callers that ask whether they may read a pointer, read it as a text, or write to it: every pointer is
   accepted, null included. The result is always 1. */
QXUT_API int UtilIsRPtr(const void* pointer);
QXUT_API int UtilIsString(const QXWCHAR* text);
QXUT_API int UtilIsWPtr(void* pointer);

QXUT_EXTERN_C_END

#endif
