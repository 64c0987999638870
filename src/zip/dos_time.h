// The time stamps of members: local time in steps of two seconds, from 1980 to 2107.
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

// Of a file's time, in the user's zone. A time out of range becomes the nearest that there is.
scDosTime DosTimeOf(const FILETIME& universal);

scDosTime DosTimeNow();

// The time back, by the user's zone; whether it is one.
bool FileTimeOf(const scDosTime& time, FILETIME& universal);

} // namespace qx
