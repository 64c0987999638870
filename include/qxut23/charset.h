/* Texts by the rules of the user's locale, and the guess of a charset from a text's letters. */
#ifndef QXUT23_CHARSET_H
#define QXUT23_CHARSET_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The GDI charset that the letters of `text` (zero-terminated; null counts as empty) suggest:
     0 (ANSI) for no letter that tells a script, 161 Greek, 204 Russian, 177 Hebrew, 178 Arabic, 222 Thai, 129 Hangul,
     128 Shift-JIS where all letters that tell one tell the same.
   Several scripts, or a unified ideograph (U+4E00 to U+9FAF): by the process's default code page 128 for 932, 134 for
   936, 129 for 949, 136 for 950, else 0. */
QXUT_API uint32_t UtilGetLikelyCharsetFromString(const QXWCHAR* text);

/* Convert the caller's zero-terminated `text` in place to upper or lower case; the length stays. The result is `text`.
 */
QXUT_API QXWCHAR* UtilLocaleStrupr(QXWCHAR* text);
QXUT_API QXWCHAR* UtilLocaleStrlwr(QXWCHAR* text);

/* Compare two zero-terminated texts in the user's locale, UtilLocaleStricmp without regard to case:
   -1 if `a` sorts first, 0 if equal, 1 if `b` sorts first, -2 if the system can't compare them (one is null). */
QXUT_API int UtilLocaleStrcmp(const QXWCHAR* a, const QXWCHAR* b);
QXUT_API int UtilLocaleStricmp(const QXWCHAR* a, const QXWCHAR* b);

/* The same for at most `count` characters of each text. Of two texts of which one begins with the other, the shorter
   sorts first. -1, 0 or 1; 0 also if the system can't compare them (one is null). */
QXUT_API int UtilLocaleStrncmp(const QXWCHAR* a, const QXWCHAR* b, uint32_t count);
QXUT_API int UtilLocaleStrnicmp(const QXWCHAR* a, const QXWCHAR* b, uint32_t count);

QXUT_EXTERN_C_END

#endif
