#include "docinfo/document_dates.h"

#include "docinfo/document_record.h"

#include <oleauto.h>

namespace qx
{

clsVariant ToLocalDate(const SYSTEMTIME& utc)
{
    constexpr double kDaysPerMillisecond = 1.1574074074074074e-8;
    SYSTEMTIME local = {};
    FILETIME fileTime = {};
    VARIANT date{};
    date.vt = VT_DATE;
    // The conversion to FILETIME and back rejects dates that don't exist in the calendar.
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) || !SystemTimeToFileTime(&local, &fileTime) ||
        !FileTimeToSystemTime(&fileTime, &local) || !SystemTimeToVariantTime(&local, &date.date))
        return clsVariant();
    date.date += local.wMilliseconds * kDaysPerMillisecond;
    return clsVariant::Adopt(date);
}

SYSTEMTIME DateOfParts(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second)
{
    SYSTEMTIME date = kNoTime;
    date.wYear = static_cast<WORD>(year);
    date.wMonth = static_cast<WORD>(month);
    date.wDay = static_cast<WORD>(day);
    date.wHour = static_cast<WORD>(hour);
    date.wMinute = static_cast<WORD>(minute);
    date.wSecond = static_cast<WORD>(second);
    return date;
}

} // namespace qx
