// ICU's data of a locale in the form returned by the system. For date pictures see date_pictures.h.
#pragma once

#include <string>

#include "text/locale.h"

namespace qxplatform
{

// Names of days from Monday = 0 and of months from January = 0, full or abbreviated. Days have the form used in dates,
// months the stand-alone form.
std::u16string DayName(const Locale& locale, int day, bool abbreviated);
std::u16string MonthName(const Locale& locale, int month, bool abbreviated);
std::u16string MonthNameInDate(const Locale& locale, int month, bool abbreviated); // next to a day number
std::u16string DayHalfName(const Locale& locale, bool afternoon);

std::u16string EraName(const Locale& locale); // for the years from 1 on
std::u16string DecimalSeparator(const Locale& locale);
std::u16string GroupSeparator(const Locale& locale);
std::u16string CurrencySymbol(const Locale& locale);

// Names in the language of `in`, or in English if that language has no such name.
std::u16string LanguageName(const Locale& locale, const Locale& in); // with the region: "German (Germany)"
std::u16string BareLanguageName(const Locale& locale, const Locale& in);
std::u16string RegionName(const Locale& locale, const Locale& in);

std::u16string LanguageCode(const Locale& locale);     // ISO 639: "de"
std::u16string RegionCode(const Locale& locale);       // ISO 3166: "DE"
std::u16string LetterRegionCode(const Locale& locale); // ISO 3166 in three letters: "DEU"
unsigned CallingCode(const Locale& locale);

} // namespace qxplatform
