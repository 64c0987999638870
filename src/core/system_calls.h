// System functions that older systems lack. Text needs them, but late loading is built on text: so they are declared
// here and defined in module/late_system_calls.cpp, where late-bound libraries live.
#pragma once

#include <windows.h>

namespace qx
{

// LCMapStringW by the rules of the invariant locale. Calls LCMapStringEx where the system and the machine's settings
// offer it. The arguments, the result and the last error are those of LCMapStringW.
int MapInvariantString(unsigned flags, const wchar_t* source, int sourceLength, wchar_t* target, int targetLength);

// Returns the language of the user interface, or the user's default language on systems that don't have one.
LANGID UserInterfaceLanguage();

} // namespace qx
