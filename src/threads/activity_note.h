// The text of the activity file of temporary files.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

// Formats a time in the user's locale: short date, time without seconds, and weekday. For people who look at the file.
String ActivityNote(const SYSTEMTIME& time);

} // namespace qx
