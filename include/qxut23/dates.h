/* Dates and times as text, daylight saving time, and local time and UTC.
 *
 * A time is the system's SYSTEMTIME; 0xFFFF in a field says that a text didn't give it. A compact date is
 * YYYYMMDDhhmmss in 14 digits, or YYYYMMDD. `locale` is the system's LCID, 0x400 the user's. No function fails for a
 * null time or text address where it says nothing of it: there is nothing to do then.
 */
#ifndef QXUT23_DATES_H
#define QXUT23_DATES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

struct _SYSTEMTIME;
struct tagVARIANT;

/* Flags for reading a text of a locale. */
enum
{
    QXUT_LOCDATE_EXPAND_YEAR = 0x01,     /* a year from 30 to 99 is of the 20th century, from 0 to 29 of the 21st */
    QXUT_LOCDATE_REPORT_DEFAULT = 0x02,  /* the result is -52 if a part was filled from today's date */
    QXUT_LOCDATE_ZERO_MISSING = 0x04,    /* a missing part is 0, and an impossible date is no error */
    QXUT_LOCDATE_ALLOW_TIME_ONLY = 0x08, /* the text may be a time alone; its date is 0 then */
    QXUT_LOCDATE_MARK_NO_TIME = 0x10     /* a text without a time gives 0xFFFF in its fields, not 0 */
};

/* Flags for writing one. */
enum
{
    QXUT_LOCTEXT_TIME_NO_SECONDS = 0x01,
    QXUT_LOCTEXT_TIME = 0x02,
    QXUT_LOCTEXT_DATE = 0x04, /* the short form */
    QXUT_LOCTEXT_24_HOURS = 0x10
};

/* Reads a date, with or without a time, as users of the locale type it: in the user's own formats, with the locale's
   separators (in its order, the time of 24 hours or with AM or PM), year-month-day, or day.month.year. A missing part
   of the date is today's. An empty text is the present local time. A text that is none of these leaves all fields 0.
   The result is 0, or -52 for a date that doesn't exist or (with QXUT_LOCDATE_REPORT_DEFAULT) isn't complete; the
   fields are filled all the same. The day of the week and the milliseconds are 0. */
QXUT_API int32_t UtilLocSystemTimeFromLocaleString(
    uint32_t locale, const QXWCHAR* text, struct _SYSTEMTIME* time, uint32_t flags);

/* Date and time in the forms of the locale; midnight is left out. See the next function. */
QXUT_API int32_t UtilLocLocaleStringFromSystemTime(
    uint32_t locale, const struct _SYSTEMTIME* time, struct tagVARIANT* text);

/* What the flags (QXUT_LOCTEXT_...) ask for, in the forms of the locale. The date comes first, then a blank and the
   time unless that is 0:00:00. A null time is the present. A date that can't be written is today's; years below 1601
   are written by the library, in the Julian calendar up to 4 October 1582. `text` becomes a VT_BSTR, whatever it was
   before; the caller clears it. The result is 0. */
QXUT_API int32_t UtilLocLocaleStringFromSystemTimeEx(
    uint32_t locale, const struct _SYSTEMTIME* time, struct tagVARIANT* text, uint32_t flags);

/* A text in the forms of the user's locale as compact date with its time; one that is compact already is only
   completed. `flags` are those of reading. At most compactChars - 1 characters and a terminator are written. A part of
   the time that wasn't given is 00; a text that is no date gives an empty one. The result is 1, or 0 for a null text
   and for what reading reports as -52. */
QXUT_API int32_t UtilDateTimeFromLocaleString(
    const QXWCHAR* text, QXWCHAR* compact, uint32_t compactChars, uint32_t flags);

/* A compact date in the forms of the user's locale. The result is 1, or 0 if textChars is below the length of the text,
   which is empty then; with just the length its last character is cut off for the terminator. */
QXUT_API int32_t UtilDateTimeToLocaleString(const QXWCHAR* compact, QXWCHAR* text, uint32_t textChars);

/* Reads what machines write, in this order: up to 14 digits (a compact date, cut off anywhere; the time is taken as it
   stands); a date of RFC 822 anywhere in the text, and one of ISO 8601 (both give UTC, without a zone RFC 822's is
   taken as it stands and ISO 8601's, with "Z" as well, for local time); whatever the system takes for a date. An
   empty text is the present local time. What is no date gives zeros with a day of the week of 0xFFFF. The result is
   0. */
QXUT_API int32_t UtilLocDateTimeToSYSTEMTIME(const QXWCHAR* text, struct _SYSTEMTIME* time);

/* For the present zone of the system. The result is 0, or E_INVALIDARG (0x80070057) for a null time and a year of 0. A
   time that can't be converted becomes all zeros. */
QXUT_API int32_t UtilLocConvertLocalTimeToUTCTime(struct _SYSTEMTIME* time);
QXUT_API int32_t UtilLocConvertUTCTimeToLocalTime(struct _SYSTEMTIME* time);

/* When daylight saving time begins and ends in a year by the present rules of the zone; all zeros if it has none. In
   zones of the south the start is behind the end. The result is 0. */
QXUT_API int32_t UtilLocGetDSTStartAndEndInUTC(uint32_t year, struct _SYSTEMTIME* start, struct _SYSTEMTIME* end);

QXUT_EXTERN_C_END

#endif
