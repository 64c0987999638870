// Locale identifiers.
#pragma once

#include <windows.h>

inline constexpr LCID kAmerican = 0x0409, kBritish = 0x0809, kCzech = 0x0405, kEnglish = kAmerican, kEstonian = 0x0425,
                      kFrench = 0x040c, kGerman = 0x0407, kHungarian = 0x040e, kJapanese = 0x0411, kPolish = 0x0415,
                      kRussian = 0x0419, kSwedish = 0x041d, kSwiss = 0x0807, kTurkish = 0x041f;
inline constexpr LCID kUnknown = 0x9999;
