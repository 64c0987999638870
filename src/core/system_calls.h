// System functions that older systems lack. String needs them, but the late-bound libraries are built on String.
// Therefore the functions are declared here and defined in module/late_system_calls.cpp.
#pragma once

#include <windows.h>

namespace qx
{

// Calls LCMapStringW for the invariant locale, or LCMapStringEx if the system and the machine's settings allow it.
// Arguments, result and last error are those of LCMapStringW.
int MapInvariantString(unsigned flags, const wchar_t* source, int sourceLength, wchar_t* target, int targetLength);

// Returns the language of the user interface, or the user's default language on systems without one.
LANGID UserInterfaceLanguage();

} // namespace qx
