/* Typed values of a profile. Each type has one text form, so that a file can be read and edited by hand:

     type       append and set write                          get reads
     Bool       TRUE or FALSE                                 true if the first character is an upper-case T or Y
     Int        decimal                                       x and hexadecimal digits, or decimal
     IntHex     x and hexadecimal digits: append writes 8     by ProfGetInt
                of them in upper case, set as many as needed
                in lower case
     Int64      decimal, without a sign                       x and hexadecimal digits, or decimal
     Int64Hex   x and hexadecimal digits without padding:     by ProfGetInt64
                append in upper case, set in lower case
     Double     six decimals after a point                    whatever wcstod parses
     Point      (x,y)                                         the same
     Rect       (left,top,right,bottom)                       the same
     RectLTWH   (left,top,width,height)                       the same
     Colorref   (red,green,blue), decimal                     the same, or x and hexadecimal digits for the whole colour
     Variant    var:// and packed bytes                       the same; any other text as a VT_BSTR

   Numbers don't depend on the user's settings. Text after the number or after the last field is ignored: "12abc" is 12.
   Getters look at the first 199 characters of a value, ProfGetInt64 at the first 63.

   For `job`, `list`, `path`, the A and W variants and threads see profile.h.

   Append functions add a new leaf after the existing entries; with a null path its name is empty. Set functions assign
   the value to the first leaf with the path, or create one; with a null path they do nothing. Both do nothing if the
   job is invalid or `value` is null.

   Results of the get functions
     PROF_OK                 `result` holds the value.
     PROF_ERR_NO_LEAF        The leaf doesn't exist or is empty, or the job is invalid. `result` holds the default.
     PROF_ERR_NOT_THAT_TYPE  The text is not of the type. `result` is unchanged, except that the fields of a point or
                             rectangle before the first malformed field may have been assigned. Bool and Double never
                             return this code, since any text is valid for them.
     PROF_ERR_STOPPED        Memory ran out.
   Defaults for points and rectangles are passed by address, which may be the address of the result. With null, the
   result is unchanged. */
#ifndef QXUT23_PROFILE_VALUES_H
#define QXUT23_PROFILE_VALUES_H

#include <qxut23/profile.h>

QXUT_EXTERN_C_BEGIN

/* Laid out like the system's POINT and RECT. */
typedef struct ProfPoint
{
    int32_t x;
    int32_t y;
} ProfPoint;

typedef struct ProfRect
{
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} ProfRect;

/* The system's VARIANT (<oleauto.h>). */
struct tagVARIANT;

/* Flags: 0 is false, anything else is true. */
QXUT_API void ProfAppendBoolA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfAppendBoolW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);
QXUT_API void ProfSetBoolA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfSetBoolW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);
QXUT_API int32_t ProfGetBoolA(HPROFJOB job, HPROFLIST list, const char* path, int32_t* result, int32_t defaultValue);
QXUT_API int32_t ProfGetBoolW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t* result, int32_t defaultValue);

QXUT_API void ProfAppendIntA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfAppendIntW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);
QXUT_API void ProfSetIntA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfSetIntW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);
QXUT_API int32_t ProfGetIntA(HPROFJOB job, HPROFLIST list, const char* path, int32_t* result, int32_t defaultValue);
QXUT_API int32_t ProfGetIntW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t* result, int32_t defaultValue);

QXUT_API void ProfAppendIntHexA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfAppendIntHexW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);
QXUT_API void ProfSetIntHexA(HPROFJOB job, HPROFLIST list, const char* path, int32_t value);
QXUT_API void ProfSetIntHexW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int32_t value);

/* A negative number is written, and read back, as the unsigned number with the same bits. */
QXUT_API void ProfAppendInt64A(HPROFJOB job, HPROFLIST list, const char* path, int64_t value);
QXUT_API void ProfAppendInt64W(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int64_t value);
QXUT_API void ProfSetInt64A(HPROFJOB job, HPROFLIST list, const char* path, int64_t value);
QXUT_API void ProfSetInt64W(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int64_t value);
QXUT_API int32_t ProfGetInt64A(HPROFJOB job, HPROFLIST list, const char* path, int64_t* result, int64_t defaultValue);
QXUT_API int32_t ProfGetInt64W(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int64_t* result, int64_t defaultValue);

QXUT_API void ProfAppendInt64HexA(HPROFJOB job, HPROFLIST list, const char* path, int64_t value);
QXUT_API void ProfAppendInt64HexW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int64_t value);
QXUT_API void ProfSetInt64HexA(HPROFJOB job, HPROFLIST list, const char* path, int64_t value);
QXUT_API void ProfSetInt64HexW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, int64_t value);

QXUT_API void ProfAppendDoubleA(HPROFJOB job, HPROFLIST list, const char* path, double value);
QXUT_API void ProfAppendDoubleW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, double value);
QXUT_API void ProfSetDoubleA(HPROFJOB job, HPROFLIST list, const char* path, double value);
QXUT_API void ProfSetDoubleW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, double value);
QXUT_API int32_t ProfGetDoubleA(HPROFJOB job, HPROFLIST list, const char* path, double* result, double defaultValue);
QXUT_API int32_t ProfGetDoubleW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, double* result, double defaultValue);

/* Red in the low byte, then green, then blue. The high byte isn't written, but reading hexadecimal digits can set it.
 */
QXUT_API void ProfAppendColorrefA(HPROFJOB job, HPROFLIST list, const char* path, uint32_t value);
QXUT_API void ProfAppendColorrefW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, uint32_t value);
QXUT_API void ProfSetColorrefA(HPROFJOB job, HPROFLIST list, const char* path, uint32_t value);
QXUT_API void ProfSetColorrefW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, uint32_t value);
QXUT_API int32_t ProfGetColorrefA(
    HPROFJOB job, HPROFLIST list, const char* path, uint32_t* result, uint32_t defaultValue);
QXUT_API int32_t ProfGetColorrefW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, uint32_t* result, uint32_t defaultValue);

QXUT_API void ProfAppendPointA(HPROFJOB job, HPROFLIST list, const char* path, const ProfPoint* value);
QXUT_API void ProfAppendPointW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfPoint* value);
QXUT_API void ProfSetPointA(HPROFJOB job, HPROFLIST list, const char* path, const ProfPoint* value);
QXUT_API void ProfSetPointW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfPoint* value);
QXUT_API int32_t ProfGetPointA(
    HPROFJOB job, HPROFLIST list, const char* path, ProfPoint* result, const ProfPoint* defaultValue);
QXUT_API int32_t ProfGetPointW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, ProfPoint* result, const ProfPoint* defaultValue);

QXUT_API void ProfAppendRectA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfAppendRectW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API void ProfSetRectA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfSetRectW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API int32_t ProfGetRectA(
    HPROFJOB job, HPROFLIST list, const char* path, ProfRect* result, const ProfRect* defaultValue);
QXUT_API int32_t ProfGetRectW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, ProfRect* result, const ProfRect* defaultValue);

/* The same structure, but the text holds width and height instead of right and bottom. */
QXUT_API void ProfAppendRectLTWHA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfAppendRectLTWHW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API void ProfSetRectLTWHA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfSetRectLTWHW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API int32_t ProfGetRectLTWHA(
    HPROFJOB job, HPROFLIST list, const char* path, ProfRect* result, const ProfRect* defaultValue);
QXUT_API int32_t ProfGetRectLTWHW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, ProfRect* result, const ProfRect* defaultValue);

/* ---- Variants ----
   A variant may be a number, date, text, error or flag, or an array of variants or texts. References are followed: the
   value itself is written. Objects, records and decimals come back empty, as do the elements of other arrays and arrays
   nested more than 64 levels deep. Arrays come back as arrays of variants with the lower bound 0. Texts end at their
   first zero character. Values of 101 bytes and more are compressed. */

QXUT_API void ProfAppendVariant(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const struct tagVARIANT* value);
QXUT_API void ProfSetVariant(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const struct tagVARIANT* value);

/* Stores the variant in `value`, which must be initialised. Its old value is cleared; the caller clears the new one. If
   the text is empty or can't be unpacked, `value` becomes VT_EMPTY; it is unchanged if the system can't convert its old
   value to VT_EMPTY (VT_NULL, an array).
   Returns PROF_OK, even if nothing was done because `value` is null or the job is invalid. Returns PROF_ERR_NO_LEAF
   after copying the default, unless it is null, to `value`. Returns PROF_ERR_STOPPED if memory runs out. */
QXUT_API int32_t ProfGetVariant(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, struct tagVARIANT* value, const struct tagVARIANT* defaultValue);

/* The same for a text that the caller already has. Returns PROF_OK; PROF_ERR_NOT_THAT_TYPE if `text` is null;
   PROF_ERR_STOPPED. */
QXUT_API int32_t ProfGetVariantFromContents(const QXWCHAR* text, struct tagVARIANT* value);

/* ---- Single texts ----
   These functions parse a text without a job. They store the value of `text` in `result`, or the default if the text is
   null or not of the type. Hexadecimal digits are accepted for colours only. ProfLPSTRtoBOOL stores 1 for an empty
   text. If a rectangle needs the default and it is null, `result` is unchanged. */

QXUT_API void ProfLPSTRtoBOOLA(const char* text, int32_t* result, int32_t defaultValue);
QXUT_API void ProfLPSTRtoBOOLW(const QXWCHAR* text, int32_t* result, int32_t defaultValue);
QXUT_API void ProfLPSTRtoINTA(const char* text, int32_t* result, int32_t defaultValue);
QXUT_API void ProfLPSTRtoINTW(const QXWCHAR* text, int32_t* result, int32_t defaultValue);
QXUT_API void ProfLPSTRtoINT64A(const char* text, int64_t* result, int64_t defaultValue);
QXUT_API void ProfLPSTRtoINT64W(const QXWCHAR* text, int64_t* result, int64_t defaultValue);
QXUT_API void ProfLPSTRtoRECTA(const char* text, ProfRect* result, const ProfRect* defaultValue);
QXUT_API void ProfLPSTRtoRECTW(const QXWCHAR* text, ProfRect* result, const ProfRect* defaultValue);
QXUT_API void ProfLPSTRtoCOLORREFA(const char* text, uint32_t* result, uint32_t defaultValue);
QXUT_API void ProfLPSTRtoCOLORREFW(const QXWCHAR* text, uint32_t* result, uint32_t defaultValue);

QXUT_EXTERN_C_END

#endif
