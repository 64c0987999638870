#include "exports/guard.h"

#include "core/charset/script_ranges.h"
#include "core/system_values.h"
#include "core/text/locale_compare.h"

#include <qxut23/charset.h>

#include <windows.h>

#include <cstdint>

using namespace qx;

std::uint32_t UtilGetLikelyCharsetFromString(const QXWCHAR* text)
{
    return Guarded(0U, [&] { return LikelyCharset(text, DefaultCodePage()); });
}

QXWCHAR* UtilLocaleStrupr(QXWCHAR* text)
{
    return Guarded(text, [&] { return text != nullptr ? CharUpperW(text) : text; });
}

QXWCHAR* UtilLocaleStrlwr(QXWCHAR* text)
{
    return Guarded(text, [&] { return text != nullptr ? CharLowerW(text) : text; });
}

int UtilLocaleStrcmp(const QXWCHAR* a, const QXWCHAR* b)
{
    return Guarded(-2, [&] { return LocaleCompare(a, b, LocaleCase::Sensitive); });
}

int UtilLocaleStricmp(const QXWCHAR* a, const QXWCHAR* b)
{
    return Guarded(-2, [&] { return LocaleCompare(a, b, LocaleCase::Ignored); });
}

int UtilLocaleStrncmp(const QXWCHAR* a, const QXWCHAR* b, std::uint32_t count)
{
    return Guarded(0, [&] { return LocaleCompareN(a, b, count, LocaleCase::Sensitive); });
}

int UtilLocaleStrnicmp(const QXWCHAR* a, const QXWCHAR* b, std::uint32_t count)
{
    return Guarded(0, [&] { return LocaleCompareN(a, b, count, LocaleCase::Ignored); });
}
