// The language in which the library's callers speak to the user, as a code of their own.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// The code of a language of the system; 1 for those that have none.
std::int32_t LanguageCode(LANGID language);

// The code that the user chose, or else that of the user interface's language.
std::int32_t GetLanguage();

// Stores the user's choice; 0 takes it back. 0, or the error of the registry.
std::int32_t SetLanguage(std::int32_t code);

} // namespace qx
