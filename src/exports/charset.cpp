#include <qxut23/charset.h>

#include "core/locale_compare.h"
#include "core/module.h"
#include "core/script_ranges.h"

#include <windows.h>

using namespace qx;

uint32_t UtilGetLikelyCharsetFromString(const wchar_t* text)
{
    return LikelyCharset(text, DefaultCodePage());
}

wchar_t* UtilLocaleStrupr(wchar_t* text)
{
    return text != nullptr ? CharUpperW(text) : nullptr;
}

wchar_t* UtilLocaleStrlwr(wchar_t* text)
{
    return text != nullptr ? CharLowerW(text) : nullptr;
}

int UtilLocaleStrcmp(const wchar_t* a, const wchar_t* b)
{
    return LocaleCompare(a, b, LocaleCase::Sensitive);
}

int UtilLocaleStricmp(const wchar_t* a, const wchar_t* b)
{
    return LocaleCompare(a, b, LocaleCase::Ignored);
}

int UtilLocaleStrncmp(const wchar_t* a, const wchar_t* b, uint32_t count)
{
    return LocaleCompareN(a, b, count, LocaleCase::Sensitive);
}

int UtilLocaleStrnicmp(const wchar_t* a, const wchar_t* b, uint32_t count)
{
    return LocaleCompareN(a, b, count, LocaleCase::Ignored);
}
