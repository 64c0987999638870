// Dates as machines write them: digits, RFC 822, ISO 8601.
#pragma once

#include <windows.h>

#include <string_view>

namespace qx
{

// A date of RFC 822 in UTC, wherever it stands in the text: "Tue, 3 Apr 2018 10:00:00 +0200". False if there is none;
// the time stays as it is then.
bool ReadRFC822Date(std::wstring_view text, SYSTEMTIME& time);

// A date of ISO 8601 in UTC, at the start of the text: "2018-04-03T10:00:00+02:00". Without a sign behind it it is
// local time. A time that goes on behind its minute must go on with seconds.
bool ReadISO8601Date(std::wstring_view text, SYSTEMTIME& time);

// The first form that fits of: nothing, which is the present local time; up to 14 digits; RFC 822; ISO 8601; whatever
// the system takes for a date. kNoTime if none does.
SYSTEMTIME ReadMachineDate(const wchar_t* text);

// The parts of a compact date, YYYYMMDDhhmmss, at their places; one that isn't there is 0.
SYSTEMTIME SplitCompactDate(std::wstring_view digits);

bool IsAllDigits(std::wstring_view text);

} // namespace qx
