/* Countries and languages by any of their names.
 *
 * The answers come from what the system says of its locales and from the library's own list of countries that the
 * system doesn't know, or knows badly. Both are merged at the first call and kept for the life of the process; where
 * both know a country under the same key, the library's values count. Codes of countries are those of ISO 3166, calling
 * codes those of ITU-T E.164, tags of languages those of the system ("de-DE", RFC 5646).
 *
 * A country and a language together have a canonical key: the English name of the country, "*" and the number of the
 * locale (LCID) in decimal, as "Germany*1031". A name of a country is one of these, without regard to the case of A to
 * Z:
 *   - the canonical key, the number of the locale in decimal, or as "0x0407";
 *   - the English name, the name in the language of the country or of the user, the ISO 3166 code in two or three
 *     letters, the international calling code, and the code that its vehicles show, each as far as it is the first
 *     country with that name;
 *   - a tag of a language, as "de-AT".
 * A plain name of a country with several languages means the one that is preferred for it.
 */
#ifndef QXUT23_COUNTRIES_H
#define QXUT23_COUNTRIES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The system's VARIANT, as its own header (oaidl.h) declares it. */
struct tagVARIANT;

/* No such type of information, or nowhere to put it. */
#define QXUT_COUNTRY_NO_TYPE (-18)

/* What UtilLocGetCountryInfo can tell, with the variant that it gives, and what it gives for a name that isn't known or
   a country of which this isn't known. */
#define QXUT_COUNTRY_LCID 0         /* VT_I4: the number of the locale; 0 */
#define QXUT_COUNTRY_CALLING_CODE 1 /* VT_I4: the international calling code; 0 */
#define QXUT_COUNTRY_ISO3166 2      /* VT_BSTR: the ISO 3166 code; empty */
#define QXUT_COUNTRY_NOTHING 3      /* VT_EMPTY */
#define QXUT_COUNTRY_CURRENCY 4     /* VT_BSTR: the sign or name of the currency; empty */
#define QXUT_COUNTRY_CODE_PAGE 5    /* VT_I4: the ANSI code page, 0 if the locale has Unicode only; 0 */
#define QXUT_COUNTRY_ENGLISH_NAME 6 /* VT_BSTR: the English name; empty */
#define QXUT_COUNTRY_NATIVE_NAME 7  /* VT_BSTR: the name in the language of the country; empty */

/* What UtilLocGetLanguageInfo can tell. */
#define QXUT_LANGUAGE_LCID 0 /* VT_I4: the number of the locale; 0 */

/* All canonical keys in the order of their characters, separated by ";". `list` is an in-out BSTR: a null string is
   allocated with SysAllocStringLen, any other is replaced with SysReAllocStringLen; the caller frees it. A null address
   drops the result. Gives 0. */
QXUT_API int32_t UtilLocGetCountryList(QXWCHAR** list);

/* One value of the country that `name` names. `info` holds a variant (VariantInit makes an empty one), whose value is
   released and replaced; the caller releases the result with VariantClear. Gives 0, or QXUT_COUNTRY_NO_TYPE for a
   `type` above 7, which leaves `info` empty, and for a null `info`. A null `name` is the empty one, which no country
   has. The English name is also found by ISO 3166 codes of which nothing else is known. */
QXUT_API int32_t UtilLocGetCountryInfo(const QXWCHAR* name, uint32_t type, struct tagVARIANT* info);

/* One value of the language that `name` names by a tag or a code; `info` as above. Gives 0, or QXUT_COUNTRY_NO_TYPE for
   a `type` other than 0. A code of two letters, and a tag of which only the language is known, give the number of the
   language without a region (LCID and 0x3FF). */
QXUT_API int32_t UtilLocGetLanguageInfo(const QXWCHAR* name, int32_t type, struct tagVARIANT* info);

QXUT_EXTERN_C_END

#endif
