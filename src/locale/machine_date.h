// Parses dates in machine-readable forms: digits, RFC 822, ISO 8601.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

namespace qx
{

// An RFC 822 date as it is written.
struct RFC822Date
{
    // The fields aren't checked. Numbers above 65,535 are 65,535, and an unknown month is 0.
    SYSTEMTIME written;
    std::optional<int> minutesToUTC; // minutes to add; empty for GMT or if there is no zone
};

// Finds the first RFC 822 date in the text. Returns false if there is none.
bool FindRFC822Date(std::wstring_view text, RFC822Date& date);

// Finds an RFC 822 date anywhere in the text and converts it to UTC: "Tue, 3 Apr 2018 10:00:00 +0200". Returns false if
// there is none; the time is then unchanged.
bool ReadRFC822Date(std::wstring_view text, SYSTEMTIME& time);

// Reads an ISO 8601 date at the start of the text and converts it to UTC: "2018-04-03T10:00:00+02:00". If no "+" or "-"
// follows the time, it is local time, even with "Z". If the time continues after the minutes, it must continue with
// seconds.
bool ReadISO8601Date(std::wstring_view text, SYSTEMTIME& time);

// Uses the first form that matches: an empty text (the current local time), up to 14 digits, RFC 822, ISO 8601, any
// form that the system recognises as a date. Returns kNoTime if none matches.
SYSTEMTIME ReadMachineDate(const wchar_t* text);

// Splits a compact date, YYYYMMDDhhmmss, into its parts. Missing parts are 0.
SYSTEMTIME SplitCompactDate(std::wstring_view digits);

bool IsAllDigits(std::wstring_view text);

} // namespace qx
