// The text in the activity file of temporary files.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

// A time by the user's locale: short date, time without seconds, and the weekday. For people who look into the file.
String ActivityNote(const SYSTEMTIME& time);

} // namespace qx
