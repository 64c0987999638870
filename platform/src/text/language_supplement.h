// Languages of the system that ICU has no data of.
#pragma once

#include "text/locale.h"

namespace qxplatform
{

// A member that is null is as in all languages without data. Days begin with Monday.
struct LanguageSupplement
{
    const char* language;
    const char16_t* days[7];
    const char16_t* months[12];
    const char16_t* decimalSeparator;
    const char16_t* longDate;
    const char16_t* shortDate;
};

// Null for a language that ICU knows, or that nothing is known of.
const LanguageSupplement* SupplementOf(const Locale& locale);

} // namespace qxplatform
