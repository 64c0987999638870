// FAT dates and times: 1980 to 2107, with a resolution of two seconds.
#include <timezoneapi.h>
#include <winbase.h>

#include "base/fail.h"

using namespace qxplatform;

namespace
{

constexpr WORD kFirstDosYear = 1980;
constexpr WORD kLastDosYear = 2107;

} // namespace

BOOL WINAPI FileTimeToDosDateTime(const FILETIME* lpFileTime, LPWORD lpFatDate, LPWORD lpFatTime)
{
    SYSTEMTIME time{};
    if (!FileTimeToSystemTime(lpFileTime, &time))
        return FALSE;
    if (time.wYear < kFirstDosYear || time.wYear > kLastDosYear)
        return Fail(ERROR_INVALID_PARAMETER);
    *lpFatDate = static_cast<WORD>((time.wYear - kFirstDosYear) << 9 | time.wMonth << 5 | time.wDay);
    *lpFatTime = static_cast<WORD>(time.wHour << 11 | time.wMinute << 5 | time.wSecond / 2);
    return TRUE;
}

BOOL WINAPI DosDateTimeToFileTime(WORD wFatDate, WORD wFatTime, LPFILETIME lpFileTime)
{
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(kFirstDosYear + (wFatDate >> 9));
    time.wMonth = wFatDate >> 5 & 15;
    time.wDay = wFatDate & 31;
    time.wHour = wFatTime >> 11;
    time.wMinute = wFatTime >> 5 & 63;
    time.wSecond = static_cast<WORD>((wFatTime & 31) * 2);
    return SystemTimeToFileTime(&time, lpFileTime);
}
