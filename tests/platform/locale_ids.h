// Locale identifiers.
#pragma once

#include <windows.h>

inline constexpr LCID AMERICAN = 0x0409, BRITISH = 0x0809, CZECH = 0x0405, ENGLISH = AMERICAN, ESTONIAN = 0x0425,
                      FRENCH = 0x040c, GERMAN = 0x0407, HUNGARIAN = 0x040e, JAPANESE = 0x0411, POLISH = 0x0415,
                      RUSSIAN = 0x0419, SWEDISH = 0x041d, SWISS = 0x0807, TURKISH = 0x041f;
inline constexpr LCID UNKNOWN = 0x9999;
