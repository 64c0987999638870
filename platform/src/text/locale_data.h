// What ICU knows of a locale, in the form in which the system gives it.
#pragma once

#include <string>
#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

enum class DateStyle
{
    Short,
    Long
};

// Pictures of the system's own language: dd.MM.yyyy, h:mm:ss tt.
std::u16string DatePicture(const Locale& locale, DateStyle style);
std::u16string TimePicture(const Locale& locale);

// What stands between the parts of a picture, as "." in dd.MM.yyyy.
std::u16string SeparatorOf(std::u16string_view picture);

// Names of days from Monday = 0 and of months from January = 0, full or abbreviated.
std::u16string DayName(const Locale& locale, int day, bool abbreviated);
std::u16string MonthName(const Locale& locale, int month, bool abbreviated);
std::u16string DayHalfName(const Locale& locale, bool afternoon);

std::u16string DecimalSeparator(const Locale& locale);
std::u16string GroupSeparator(const Locale& locale);
std::u16string CurrencySymbol(const Locale& locale);

// Names in the language of `in`.
std::u16string LanguageName(const Locale& locale, const Locale& in); // with the region: "German (Germany)"
std::u16string BareLanguageName(const Locale& locale, const Locale& in);
std::u16string RegionName(const Locale& locale, const Locale& in);

std::u16string LanguageCode(const Locale& locale); // ISO 639: "de"
std::u16string RegionCode(const Locale& locale);   // ISO 3166: "DE"

} // namespace qxplatform
