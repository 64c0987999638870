/* Values of a profile that are no texts. Each type has one text form, so that a file can be read and written by hand:

     type       append and set write                          get reads
     Bool       TRUE or FALSE                                 true if the first character is T or Y, upper case only
     Int        decimal                                       x and hexadecimal digits, or decimal
     IntHex     x and hexadecimal digits: append 8 of them    by ProfGetInt
                in upper case, set as many as are needed in
                lower case
     Int64      decimal, without a sign                       x and hexadecimal digits, or decimal
     Int64Hex   x and hexadecimal digits without padding:     by ProfGetInt64
                append in upper case, set in lower case
     Double     six decimals behind a point                   what wcstod reads
     Point      (x,y)                                         the same
     Rect       (left,top,right,bottom)                       the same
     RectLTWH   (left,top,width,height)                       the same
     Colorref   (red,green,blue), decimal                     the same, or x and hexadecimal digits for the whole colour
     Variant    var:// and packed bytes                       the same; any other text as a VT_BSTR

   Numbers don't depend on the user's settings. What follows the number, or the last field, is ignored: "12abc" is 12.
   A getter looks at the first 199 characters, ProfGetInt64 at 63.

   For `job`, `list`, `path`, the two spellings and threads see profile.h.

   Append makes a new leaf behind what is there, with the empty name for a null path; set gives the first leaf of the
   path the value, or makes one, and does nothing for a null path. Both do nothing for the invalid job and for a null
   value.

   Get
     PROF_OK                 `result` holds the value.
     PROF_ERR_NO_LEAF        There is no such leaf, it is empty, or the job is invalid: `result` got the default.
     PROF_ERR_NOT_THAT_TYPE  The text isn't one of the type. `result` is as it was; of a point or rectangle it may have
                             the fields in front of the one that is wrong. Not given for Bool and Double, which any text
                             is.
     PROF_ERR_STOPPED        Memory ran out.
   Defaults of points and rectangles are given by address, which may be that of the result; null means that the result
   stays as it is. */
#ifndef QXUT23_PROFILE_VALUES_H
#define QXUT23_PROFILE_VALUES_H

#include <qxut23/profile.h>

QXUT_EXTERN_C_BEGIN

/* As the system's POINT and RECT. */
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

/* Flags: 0 is false, all else is true. */
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

/* A negative number is written, and comes back, as the unsigned one of the same bits. */
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

/* Red in the low byte, then green, then blue. The high byte isn't written, but a text of hexadecimal digits can bring
 * it. */
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

/* The same struct, but its text holds width and height. */
QXUT_API void ProfAppendRectLTWHA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfAppendRectLTWHW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API void ProfSetRectLTWHA(HPROFJOB job, HPROFLIST list, const char* path, const ProfRect* value);
QXUT_API void ProfSetRectLTWHW(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const ProfRect* value);
QXUT_API int32_t ProfGetRectLTWHA(
    HPROFJOB job, HPROFLIST list, const char* path, ProfRect* result, const ProfRect* defaultValue);
QXUT_API int32_t ProfGetRectLTWHW(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, ProfRect* result, const ProfRect* defaultValue);

/* ---- Variants ----
   Numbers, dates, texts, errors, flags, and arrays of variants, texts and these; what a variant refers to is written
   itself. The elements of other arrays come back empty, as do objects, records and decimals; an array comes back as one
   of variants with the lower bound 0; a text ends at its first zero character; arrays nested more than 64 deep are
   empty. From 101 bytes on the bytes are compressed. */

QXUT_API void ProfAppendVariant(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const struct tagVARIANT* value);
QXUT_API void ProfSetVariant(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const struct tagVARIANT* value);

/* `value` must be initialised and is cleared for the new value, which is the caller's to clear. An empty text, and one
   that can't be unpacked, make it VT_EMPTY, unless it holds what the system doesn't convert to that (VT_NULL, an
   array): that stays. PROF_OK, also if nothing is done because `value` is null or the job invalid; PROF_ERR_NO_LEAF,
   and `value` got a copy of the default, if that isn't null; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfGetVariant(
    HPROFJOB job, HPROFLIST list, const QXWCHAR* path, struct tagVARIANT* value, const struct tagVARIANT* defaultValue);

/* The same for a text that is at hand. PROF_OK; PROF_ERR_NOT_THAT_TYPE for a null text; PROF_ERR_STOPPED. */
QXUT_API int32_t ProfGetVariantFromContents(const QXWCHAR* text, struct tagVARIANT* value);

/* ---- Single texts ----
   Without a job: the value of `text` goes to `result`, or else the default, also for a null text. Hexadecimal digits
   are read for colours only; an empty text is a true flag. A null default of a rectangle leaves the result as it is. */

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
