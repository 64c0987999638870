// Formats the text of the temporary files' activity file (see clsTempFileRemover).
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

// Formats a time for human readers, in the user's locale: short date, time without seconds, and weekday.
String ActivityNote(const SYSTEMTIME& time);

} // namespace qx
