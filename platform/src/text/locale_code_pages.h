// The code page that the system has for the 8-bit text of a locale.
#pragma once

#include <winnls.h>

#include "text/locale.h"

namespace qxplatform
{

// CP_ACP for a locale that has Unicode only.
unsigned AnsiCodePageOf(const Locale& locale);

// The group of languages that a locale belongs to: one of the LGRPID_ constants.
LGRPID LanguageGroupOf(const Locale& locale);

} // namespace qxplatform
