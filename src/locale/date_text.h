// Dates and times written for users, and the compact form.
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

// In the forms of a locale. Null is the present; midnight shows no time. A date that can't be written is today's.
String LocaleDateText(LCID locale, const SYSTEMTIME* time, std::uint32_t flags);

// For the years that the system doesn't write. Knows runs of d, M and y in either case and text in double quotes, all
// else is copied. Without a format it is the locale's short date. At most `maxChars` characters.
String FormatEarlyDate(const clsDate& date, LCID locale, const wchar_t* format, std::size_t maxChars);

// A text in the forms of the user's locale as YYYYMMDDhhmmss. Empty if it is none; false if it was refused.
bool CompactFromLocaleText(const wchar_t* text, std::uint32_t flags, String& compact);

// The other way round; positions that hold no digits count as 0.
String LocaleTextFromCompact(const wchar_t* compact);

} // namespace qx
