// The time stamps of archive entries: local time with a resolution of two seconds, from 1980 to 2107.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

struct scDosTime
{
    std::uint16_t date = 0;
    std::uint16_t time = 0;
};

// Converts a file time to local time. Times out of range become the nearest representable time.
scDosTime DosTimeOf(const FILETIME& universal);

scDosTime DosTimeNow();

// Converts back to UTC, using the user's time zone. Returns false if `time` is invalid.
bool FileTimeOf(const scDosTime& time, FILETIME& universal);

} // namespace qx
