#include "threads/activity_note.h"

#include <iterator>

namespace qx
{
namespace
{

using Formatter = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

// Returns an empty text if the system can't format the time.
String Formatted(Formatter format, DWORD flags, const SYSTEMTIME& time)
{
    wchar_t buffer[256];
    const int size = format(LOCALE_USER_DEFAULT, flags, &time, nullptr, buffer, static_cast<int>(std::size(buffer)));
    return size > 0 ? String(buffer) : String();
}

String WeekdayName(WORD dayOfWeek)
{
    constexpr LCTYPE kNames[] = {LOCALE_SDAYNAME7, LOCALE_SDAYNAME1, LOCALE_SDAYNAME2, LOCALE_SDAYNAME3,
        LOCALE_SDAYNAME4, LOCALE_SDAYNAME5, LOCALE_SDAYNAME6}; // starting with Sunday
    wchar_t buffer[128];
    if (dayOfWeek >= std::size(kNames) ||
        GetLocaleInfoW(LOCALE_USER_DEFAULT, kNames[dayOfWeek], buffer, static_cast<int>(std::size(buffer))) <= 0)
        return String();
    return String(buffer);
}

} // namespace

String ActivityNote(const SYSTEMTIME& time)
{
    const String date = Formatted(&GetDateFormatW, DATE_SHORTDATE, time);
    const String clock = date.IsEmpty() ? String() : Formatted(&GetTimeFormatW, TIME_NOSECONDS, time);
    if (clock.IsEmpty())
    {
        const String reason = String::SystemErrorText(GetLastError());
        return String(String::kFormatted, L"[time %d:%02d:%02d.%03d is invalid: %s]\n", time.wHour, time.wMinute,
            time.wSecond, time.wMilliseconds, reason.Text());
    }
    const String weekday = WeekdayName(time.wDayOfWeek);
    return weekday.IsEmpty() ? String(String::kFormatted, L"%s, %s", date.Text(), clock.Text())
                             : String(String::kFormatted, L"%s, %s (%s)", date.Text(), clock.Text(), weekday.Text());
}

} // namespace qx
