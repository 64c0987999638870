// The system's code pages for 8-bit text in a locale.
#pragma once

#include <winnls.h>

#include "text/locale.h"

namespace qxplatform
{

struct CodePages
{
    unsigned ansi; // CP_ACP for a Unicode-only locale
    unsigned oem;  // CP_OEMCP for a Unicode-only locale
};

CodePages CodePagesOf(const Locale& locale);

// Returns the language group of a locale, an LGRPID_ constant.
LGRPID LanguageGroupOf(const Locale& locale);

} // namespace qxplatform
