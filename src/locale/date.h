// A calendar day.
#pragma once

#include <cstdint>

namespace qx
{

// A day as day, month and year and as a Julian day number: in the Julian calendar up to 4 October 1582, in the
// Gregorian calendar from the next day on, which is 15 October. There is no year 0; the year before 1 is -1.
//
// From the year 1 on the results are exact. For earlier years all steps truncate toward zero, with two consequences.
// The leap day is added to the years divisible by 4 (-4, -8, ...) instead of the true leap years (-1, -5, ...). And day
// numbers are one higher than in later years, except from March of a true leap year to the next February.
class clsDate
{
public:
    // If the date doesn't exist, the object is invalid: all bits of julianDay are set, and day, month and year are 0.
    clsDate(std::int32_t dayOfMonth, std::int32_t monthOfYear, std::int32_t yearOfEra);
    virtual ~clsDate() = default;

    // Computes julianDay and dayOfWeek from the other fields. A month out of range is first carried over into the year.
    void ToJulian();

    // Computes the other fields from julianDay.
    void FromJulian();

    bool IsValid() const { return julianDay != kInvalidDay; }

    static constexpr std::uint32_t kInvalidDay = 0xFFFFFFFF;

    std::uint32_t julianDay = 0; // the Julian date of the midnight at which the day starts, rounded down
    std::int32_t year;
    std::int32_t month;
    std::int32_t day;
    std::int32_t dayOfWeek = 0;      // 1 is Sunday, 7 is Saturday
    std::int32_t firstDayOfWeek = 1; // Sunday
};

} // namespace qx
