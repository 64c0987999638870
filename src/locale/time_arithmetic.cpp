#include "locale/time_arithmetic.h"

#include <cstdint>

namespace qx
{

void AddMinutes(SYSTEMTIME& time, std::int64_t minutes)
{
    constexpr std::int64_t kUnitsPerMinute = 600'000'000;
    FILETIME fileTime;
    if (SystemTimeToFileTime(&time, &fileTime))
    {
        ULARGE_INTEGER units;
        units.LowPart = fileTime.dwLowDateTime;
        units.HighPart = fileTime.dwHighDateTime;
        units.QuadPart += static_cast<ULONGLONG>(minutes * kUnitsPerMinute);
        fileTime = {units.LowPart, units.HighPart};
        if (FileTimeToSystemTime(&fileTime, &time))
            return;
    }
    time = kNoTime;
}

} // namespace qx
