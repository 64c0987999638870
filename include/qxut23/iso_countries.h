/* Countries by their ISO 3166-1 codes.
 *
 * The library carries all 249 countries of the standard, so that the answers don't depend on the system. Codes and
 * English names are from ISO 3166-1 as Debian's iso-codes has them, native names and currencies (ISO 4217) from
 * Unicode's CLDR 42, calling codes (ITU-T E.164) from the metadata of libphonenumber. The functions of countries.h find
 * countries by more names, but prefer tags of languages: there "GU" is India, because of Gujarati.
 */
#ifndef QXUT23_ISO_COUNTRIES_H
#define QXUT23_ISO_COUNTRIES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

#define QXUT_ISO_COUNTRY_OK 0
#define QXUT_ISO_COUNTRY_UNKNOWN (-1)
#define QXUT_ISO_COUNTRY_BAD_RECORD (-2) /* a null record, or a `size` below that of the first version */

/* What is known of a country. All texts end with a zero character; those behind pointers belong to the library and stay
   valid until it is unloaded. Later versions may add fields at the end. */
typedef struct QxCountry
{
    uint32_t size;            /* of the record in bytes, set by the caller: sizeof(QxCountry) */
    int32_t callingCode;      /* such as 49; 0 for the uninhabited territories AQ, BV, GS, HM, TF and UM and for PN */
    QXWCHAR alpha2[4];        /* "DE" */
    QXWCHAR alpha3[4];        /* "DEU" */
    QXWCHAR numeric[4];       /* "276": three digits */
    QXWCHAR currency[4];      /* "EUR"; empty for AQ, which has none */
    const QXWCHAR* name;      /* in everyday English: "Bolivia" */
    const QXWCHAR* shortName; /* as the standard has it: "Bolivia, Plurinational State of" */
    const QXWCHAR* officialName; /* in English: "Plurinational State of Bolivia" */
    const QXWCHAR* nativeName;   /* in the language that most of its people speak, or else in English */
} QxCountry;

/* Stores in `*country` what is known of the country with the code `code`: two letters, three letters or three digits.
   Any other text is compared with the three English names. The case of A to Z doesn't count; a null `code` is unknown.
   Returns QXUT_ISO_COUNTRY_OK, QXUT_ISO_COUNTRY_UNKNOWN or QXUT_ISO_COUNTRY_BAD_RECORD; the record changes only on
   success. May be called by several threads at once, and never fails for lack of memory. */
QXUT_API int32_t QxGetCountryByCode(const QXWCHAR* code, QxCountry* country);

QXUT_EXTERN_C_END

#endif
