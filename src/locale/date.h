// A day of the calendar.
#pragma once

#include <cstdint>

namespace qx
{

// A day as day, month and year and as a Julian day number: the Julian calendar up to 4 October 1582, the Gregorian one
// from the next day on, which is the 15th. There is no year 0: -1 is the year before 1.
//
// From the year 1 on this is exact. Before it, all steps truncating toward zero, the leap day counts as one of the
// years that 4 divides (-4, -8, ...) and not of the true leap years (-1, -5, ...), and a day's number is one higher
// than later ones, except from March of a true leap year to the next February.
class clsDate
{
public:
    // A date that doesn't exist gives the invalid one: all bits of julianDay set, and no day, month and year.
    clsDate(std::int32_t dayOfMonth, std::int32_t monthOfYear, std::int32_t yearOfEra);
    virtual ~clsDate() = default;

    // Fills julianDay and dayOfWeek from the other fields, after a month out of bounds has been carried into the year.
    void ToJulian();

    // Fills the other fields from julianDay.
    void FromJulian();

    bool IsValid() const { return julianDay != kInvalidDay; }

    static constexpr std::uint32_t kInvalidDay = 0xFFFFFFFF;

    std::uint32_t julianDay = 0; // the Julian date of the midnight that begins the day, without its half
    std::int32_t year;
    std::int32_t month;
    std::int32_t day;
    std::int32_t dayOfWeek = 0;      // 1 is Sunday, 7 Saturday
    std::int32_t firstDayOfWeek = 1; // Sunday
};

} // namespace qx
