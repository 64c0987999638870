// Formats dates and times by pictures, also for years that the system's functions refuse.
#pragma once

#include <minwindef.h>

#include <string>

#include "text/locale.h"
#include "time/pictures.h"

namespace qxplatform
{

// `date` must include its day of the week.
std::u16string FormatDate(const std::u16string& picture, const SYSTEMTIME& date, const Locale& locale);

// `flags` are the flags of GetTimeFormatW.
std::u16string FormatTime(const std::u16string& picture, const SYSTEMTIME& time, const Pictures& pictures, DWORD flags);

} // namespace qxplatform
