/* Dates and times as text, daylight saving time, and conversion between local time and UTC.
 *
 * Times are passed as the system's SYSTEMTIME. 0xFFFF in a field means that the text did not contain it. A compact date
 * is 14 digits, YYYYMMDDhhmmss, or 8 digits, YYYYMMDD. `locale` is an LCID of the system; 0x400 is the user's locale.
 * Unless a function says otherwise, a null time or text address is not an error: the function does nothing.
 */
#ifndef QXUT23_DATES_H
#define QXUT23_DATES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

struct _SYSTEMTIME;
struct tagVARIANT;

/* Flags for reading a text in the forms of a locale. */
enum
{
    QXUT_LOCDATE_EXPAND_YEAR = 0x01,     /* two-digit years: 30 to 99 mean 1930 to 1999, 0 to 29 mean 2000 to 2029 */
    QXUT_LOCDATE_REPORT_DEFAULT = 0x02,  /* return -52 if a part was filled in from today's date */
    QXUT_LOCDATE_ZERO_MISSING = 0x04,    /* set missing parts to 0, and accept impossible dates */
    QXUT_LOCDATE_ALLOW_TIME_ONLY = 0x08, /* accept a time without a date; the date fields are 0 then */
    QXUT_LOCDATE_MARK_NO_TIME = 0x10     /* set the time fields to 0xFFFF instead of 0 if the text has no time */
};

/* Flags for writing a text in the forms of a locale. */
enum
{
    QXUT_LOCTEXT_TIME_NO_SECONDS = 0x01,
    QXUT_LOCTEXT_TIME = 0x02,
    QXUT_LOCTEXT_DATE = 0x04, /* the short form */
    QXUT_LOCTEXT_24_HOURS = 0x10
};

/* Parses a date, with or without a time, as users of the locale type it: in the user's own formats, with the locale's
   separators (in the locale's order; the time in 24 hours or with AM or PM), as year-month-day, or as day.month.year.
   Missing parts of the date are filled in from today's date. An empty text means the current local time. A text in none
   of these forms sets all fields to 0. The day of the week and the milliseconds are always 0. Returns 0, or -52 if the
   date doesn't exist or, with QXUT_LOCDATE_REPORT_DEFAULT, is incomplete. The fields are filled in both cases. */
QXUT_API int32_t UtilLocSystemTimeFromLocaleString(
    uint32_t locale, const QXWCHAR* text, struct _SYSTEMTIME* time, uint32_t flags);

/* Stores date and time in the forms of the locale in `text`. A time of 0:00:00 is omitted. Equivalent to
   UtilLocLocaleStringFromSystemTimeEx with QXUT_LOCTEXT_TIME and QXUT_LOCTEXT_DATE. */
QXUT_API int32_t UtilLocLocaleStringFromSystemTime(
    uint32_t locale, const struct _SYSTEMTIME* time, struct tagVARIANT* text);

/* Stores the parts that `flags` (QXUT_LOCTEXT_...) select, in the forms of the locale, in `text`: the date, then a
   blank and the time unless it is 0:00:00. A null `time` means the current time. A date that can't be formatted is
   replaced by today's date. Years before 1601 are formatted by the library, in the Julian calendar up to 4 October
   1582. `text` must be an initialised variant; it becomes a VT_BSTR whatever its previous type, and the caller clears
   it. Returns 0. */
QXUT_API int32_t UtilLocLocaleStringFromSystemTimeEx(
    uint32_t locale, const struct _SYSTEMTIME* time, struct tagVARIANT* text, uint32_t flags);

/* Converts a text in the forms of the user's locale to a compact date with its time. A text that is already compact is
   only completed. `flags` are the flags for reading. Writes at most compactChars - 1 characters and a terminator.
   Missing parts of the time become 00. A text that is no date produces an empty text. Returns 1, or 0 if `text` is null
   or UtilLocSystemTimeFromLocaleString would return -52. */
QXUT_API int32_t UtilDateTimeFromLocaleString(
    const QXWCHAR* text, QXWCHAR* compact, uint32_t compactChars, uint32_t flags);

/* Converts a compact date to the forms of the user's locale. Returns 1. Returns 0 and an empty text if textChars is
   less than the length of the result. If textChars equals the length, the last character is lost to the terminator. */
QXUT_API int32_t UtilDateTimeToLocaleString(const QXWCHAR* compact, QXWCHAR* text, uint32_t textChars);

/* Parses machine-readable dates. Tries in this order: up to 14 digits (a compact date truncated at any point,
   whose time isn't converted); an RFC 822 date anywhere in the text; an ISO 8601 date at the start of the text; any
   date that the system recognises. RFC 822 and ISO 8601 dates are converted to UTC. An RFC 822 time without a zone
   isn't converted. An ISO 8601 time without a numeric offset counts as local time, even if it ends in "Z". An empty
   text means the current local time. A text that is no date produces zeros with 0xFFFF as the day of the week. Returns
   0. */
QXUT_API int32_t UtilLocDateTimeToSYSTEMTIME(const QXWCHAR* text, struct _SYSTEMTIME* time);

/* Convert between local time and UTC in the system's current time zone, in place. Both return 0, or E_INVALIDARG
   (0x80070057) if `time` is null or its year is 0. A time that can't be converted becomes all zeros. */
QXUT_API int32_t UtilLocConvertLocalTimeToUTCTime(struct _SYSTEMTIME* time);
QXUT_API int32_t UtilLocConvertUTCTimeToLocalTime(struct _SYSTEMTIME* time);

/* Returns, by the zone's current rules, when daylight saving time starts and ends in a year, in UTC. Both times are all
   zeros if the zone has no daylight saving time. In the southern hemisphere the start is later than the end. Either
   address may be null. Returns 0. */
QXUT_API int32_t UtilLocGetDSTStartAndEndInUTC(uint32_t year, struct _SYSTEMTIME* start, struct _SYSTEMTIME* end);

QXUT_EXTERN_C_END

#endif
