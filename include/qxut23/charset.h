/* Case conversion and comparison by the rules of the user's locale, and a charset guess from the letters of a text. */
#ifndef QXUT23_CHARSET_H
#define QXUT23_CHARSET_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Returns the GDI charset that the letters of `text` (zero-terminated; null counts as empty) suggest:
     0 (ANSI) if no letter identifies a script, 161 Greek, 204 Russian, 177 Hebrew, 178 Arabic, 222 Thai, 129 Hangul,
     128 Shift-JIS. All identifying letters must agree.
   If the letters belong to several scripts, or one is a unified ideograph (U+4E00 to U+9FAF), the process's default
   code page decides: 128 for 932, 134 for 936, 129 for 949, 136 for 950, otherwise 0. */
QXUT_API uint32_t UtilGetLikelyCharsetFromString(const QXWCHAR* text);

/* Convert the caller's zero-terminated `text` to upper or lower case in place. The length doesn't change. Both return
 * `text`.
 */
QXUT_API QXWCHAR* UtilLocaleStrupr(QXWCHAR* text);
QXUT_API QXWCHAR* UtilLocaleStrlwr(QXWCHAR* text);

/* Compare two zero-terminated texts by the rules of the user's locale. UtilLocaleStricmp ignores case. Both return -1
   if `a` sorts first, 0 if the texts are equal, 1 if `b` sorts first, and -2 if the system can't compare them (for
   example if one is null). */
QXUT_API int UtilLocaleStrcmp(const QXWCHAR* a, const QXWCHAR* b);
QXUT_API int UtilLocaleStricmp(const QXWCHAR* a, const QXWCHAR* b);

/* Compare at most `count` characters of each text in the same way. If one text is a prefix of the other, the shorter
   one sorts first. Both return -1, 0 or 1, and also 0 if the system can't compare the texts (for example if one is
   null). */
QXUT_API int UtilLocaleStrncmp(const QXWCHAR* a, const QXWCHAR* b, uint32_t count);
QXUT_API int UtilLocaleStrnicmp(const QXWCHAR* a, const QXWCHAR* b, uint32_t count);

QXUT_EXTERN_C_END

#endif
