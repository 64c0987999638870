// Formats dates and times for users, and converts them to and from the compact form.
#pragma once

#include "core/text/string.h"
#include "locale/date.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace qx
{

enum : std::uint32_t
{
    kTextTimeWithoutSeconds = 0x01,
    kTextTime = 0x02,
    kTextDate = 0x04,
    kTextTimeOf24Hours = 0x10
};

// Formats a time by the rules of a locale. Null is the current time. Midnight is formatted without a time. A date that
// the system can't format is replaced by today's date.
String LocaleDateText(LCID locale, const SYSTEMTIME* time, std::uint32_t flags);

// Formats dates before the first year that the system supports. Replaces runs of d, M and y in either case, copies text
// in double quotes, and copies all other characters. Without a format, uses the locale's short date format. Returns at
// most `maxChars` characters.
String FormatEarlyDate(const clsDate& date, LCID locale, const wchar_t* format, std::size_t maxChars);

// Converts a text in the formats of the user's locale to YYYYMMDDhhmmss. The result is empty if the text contains no
// date. Returns false if the parser rejects the text.
bool CompactFromLocaleText(const wchar_t* text, std::uint32_t flags, String& compact);

// Converts the compact form to a text in the user's locale. Positions without digits count as 0.
String LocaleTextFromCompact(const wchar_t* compact);

} // namespace qx
