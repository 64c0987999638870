/* Countries by their ISO 3166-1 codes.
 *
 * The library contains a table of all 249 countries of the standard, so the answers do not depend on the system. Codes
 * and English names come from ISO 3166-1 as published in Debian's iso-codes, native names and currencies (ISO 4217)
 * from Unicode CLDR 42, and calling codes (ITU-T E.164) from the metadata of libphonenumber. The functions of
 * countries.h accept more names, but prefer language tags: there "GU" is India, because gu is the tag of Gujarati.
 */
#ifndef QXUT23_ISO_COUNTRIES_H
#define QXUT23_ISO_COUNTRIES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Result codes. */
#define QXUT_ISO_COUNTRY_OK 0
#define QXUT_ISO_COUNTRY_UNKNOWN (-1)
#define QXUT_ISO_COUNTRY_BAD_RECORD (-2) /* null, or `size` is smaller than the record */

/* The data of a country. All texts are zero-terminated; the pointers refer to constant data of the library and are
   valid until it is unloaded. Future versions may append fields. */
typedef struct QxCountry
{
    uint32_t size;               /* size of the record in bytes, set by the caller: sizeof(QxCountry) */
    int32_t callingCode;         /* for example 49; 0 for AQ, BV, GS, HM, PN, TF and UM, which have none of their own */
    QXWCHAR alpha2[4];           /* "DE" */
    QXWCHAR alpha3[4];           /* "DEU" */
    QXWCHAR numeric[4];          /* "276": three digits */
    QXWCHAR currency[4];         /* ISO 4217 code, "EUR"; empty for AQ, which has no currency */
    const QXWCHAR* name;         /* common English name: "Bolivia" */
    const QXWCHAR* shortName;    /* English short name of the standard: "Bolivia, Plurinational State of" */
    const QXWCHAR* officialName; /* official English name: "Plurinational State of Bolivia" */
    const QXWCHAR* nativeName;   /* in the language of most inhabitants, or in English if CLDR lacks that name */
} QxCountry;

/* Looks up a country by its code: two letters, three letters or three digits. Any other text is compared with the three
   English names. The case of A to Z is ignored; a null `code` is unknown. Fills `*country` on success and leaves it
   unchanged otherwise. Returns QXUT_ISO_COUNTRY_OK, QXUT_ISO_COUNTRY_UNKNOWN or QXUT_ISO_COUNTRY_BAD_RECORD.
   Thread-safe; allocates no memory. */
QXUT_API int32_t QxGetCountryByCode(const QXWCHAR* code, QxCountry* country);

QXUT_EXTERN_C_END

#endif
