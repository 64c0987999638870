#include "locale/time_arithmetic.h"

namespace qx
{

void AddMinutes(SYSTEMTIME& time, int64_t minutes)
{
    constexpr int64_t unitsPerMinute = 600'000'000;
    FILETIME fileTime;
    if (SystemTimeToFileTime(&time, &fileTime))
    {
        ULARGE_INTEGER units;
        units.LowPart = fileTime.dwLowDateTime;
        units.HighPart = fileTime.dwHighDateTime;
        units.QuadPart += static_cast<ULONGLONG>(minutes * unitsPerMinute);
        fileTime = {units.LowPart, units.HighPart};
        if (FileTimeToSystemTime(&fileTime, &time))
            return;
    }
    time = kNoTime;
}

} // namespace qx
