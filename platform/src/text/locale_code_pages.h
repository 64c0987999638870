// The code pages that the system has for the 8-bit text of a locale.
#pragma once

#include <winnls.h>

#include "text/locale.h"

namespace qxplatform
{

struct CodePages
{
    unsigned ansi; // CP_ACP for a locale that has Unicode only
    unsigned oem;  // CP_OEMCP for such a one
};

CodePages CodePagesOf(const Locale& locale);

// The group of languages that a locale belongs to: one of the LGRPID_ constants.
LGRPID LanguageGroupOf(const Locale& locale);

} // namespace qxplatform
