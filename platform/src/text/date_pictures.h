// How a locale writes dates and times, in the system's picture language: dd.MM.yyyy, h:mm:ss tt.
#pragma once

#include <string>
#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

enum class DateStyle
{
    Short,
    Long,
    Numbers // of numbers alone, without fillers: what tells the order and the separator
};

std::u16string DatePicture(const Locale& locale, DateStyle style);
std::u16string TimePicture(const Locale& locale);

// What stands between the first two parts of a date, as "." in dd.MM.yyyy.
std::u16string DateSeparatorOf(std::u16string_view picture);

// What stands between hour and minute.
std::u16string TimeSeparatorOf(std::u16string_view picture);

} // namespace qxplatform
