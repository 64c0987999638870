// The language in which the library's callers address the user, as a code that the callers define.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// Returns the code for a language of the system, or 1 if it has none.
std::int32_t LanguageCode(LANGID language);

// Returns the code that the user chose, or else the code of the user interface language.
std::int32_t GetLanguage();

// Stores the user's choice; 0 removes it. Returns 0 or a registry error code.
std::int32_t SetLanguage(std::int32_t code);

} // namespace qx
