// The date and time formats of a locale in the system's picture language: dd.MM.yyyy, h:mm:ss tt.
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
    Numbers // only numbers, without filler text; determines order and separator
};

std::u16string DatePicture(const Locale& locale, DateStyle style);
std::u16string TimePicture(const Locale& locale);

// Returns the text between the first two parts of a date, such as "." in dd.MM.yyyy.
std::u16string DateSeparatorOf(std::u16string_view picture);

// Returns the text between hour and minute.
std::u16string TimeSeparatorOf(std::u16string_view picture);

} // namespace qxplatform
