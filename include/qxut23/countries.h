/* Looks up countries and languages by any of their names.
 *
 * The data comes from the system's locales and from the library's own list of countries that the system lacks or
 * describes incorrectly. Both are merged at the first call and kept until the process ends. If both have a country
 * under the same key, the library's values win. Country codes follow ISO 3166, calling codes ITU-T E.164; language tags
 * are the system's ("de-DE", RFC 5646).
 *
 * A pair of country and language has a canonical key: the English name of the country, "*", and the locale identifier
 * (LCID) in decimal, for example "Germany*1031". A country name is one of the following. Case is ignored for the
 * letters A to Z.
 *   - the canonical key, or the LCID in decimal or as "0x0407";
 *   - the English name, the name in the country's language or in the user's language, the two- or three-letter ISO 3166
 *     code, the international calling code, or the vehicle registration code. If several countries share such a name,
 *     it refers to the first one;
 *   - a language tag such as "de-AT".
 * For a country with several languages, a plain country name refers to the country's preferred language.
 */
#ifndef QXUT23_COUNTRIES_H
#define QXUT23_COUNTRIES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The system's VARIANT, as declared in the system's own header (oaidl.h). */
struct tagVARIANT;

/* The requested type doesn't exist, or the result address is null. */
#define QXUT_COUNTRY_NO_TYPE (-18)

/* The kinds of information that UtilLocGetCountryInfo returns, each with the type of its variant and, after the
   semicolon, the value returned if the name is unknown or the country has no such value. */
#define QXUT_COUNTRY_LCID 0         /* VT_I4: the LCID; 0 */
#define QXUT_COUNTRY_CALLING_CODE 1 /* VT_I4: the international calling code; 0 */
#define QXUT_COUNTRY_ISO3166 2      /* VT_BSTR: the ISO 3166 code; empty */
#define QXUT_COUNTRY_NOTHING 3      /* VT_EMPTY */
#define QXUT_COUNTRY_CURRENCY 4     /* VT_BSTR: the symbol or name of the currency; empty */
#define QXUT_COUNTRY_CODE_PAGE 5    /* VT_I4: the ANSI code page, or 0 for a Unicode-only locale; 0 */
#define QXUT_COUNTRY_ENGLISH_NAME 6 /* VT_BSTR: the English name; empty */
#define QXUT_COUNTRY_NATIVE_NAME 7  /* VT_BSTR: the name in the country's language; empty */

/* The kinds of information that UtilLocGetLanguageInfo returns. */
#define QXUT_LANGUAGE_LCID 0 /* VT_I4: the LCID; 0 */

/* Stores all canonical keys, sorted by character and separated by ";", in `list`. `list` is an in-out BSTR: a null
   string is allocated with SysAllocStringLen, any other is replaced with SysReAllocStringLen; the caller frees it. If
   the address is null, the result is discarded. Returns 0. */
QXUT_API int32_t UtilLocGetCountryList(QXWCHAR** list);

/* Stores one value of the country called `name` in `info`. `info` must be an initialised variant (VariantInit); its old
   value is released, and the caller releases the new one with VariantClear. Returns 0, or QXUT_COUNTRY_NO_TYPE if
   `info` is null or `type` is above 7; `info` is empty in the latter case. A null `name` counts as the empty name,
   which no country has. The English name can also be looked up by ISO 3166 codes for which no other information is
   available. */
QXUT_API int32_t UtilLocGetCountryInfo(const QXWCHAR* name, uint32_t type, struct tagVARIANT* info);

/* Stores one value of the language called `name`, a language tag or code, in `info`, which is treated as above. Returns
   0, or QXUT_COUNTRY_NO_TYPE if `info` is null or `type` is not 0. A two-letter code, or a tag of which only the
   language is known, returns the identifier of the language without a region (the low ten bits of the LCID). */
QXUT_API int32_t UtilLocGetLanguageInfo(const QXWCHAR* name, int32_t type, struct tagVARIANT* info);

QXUT_EXTERN_C_END

#endif
