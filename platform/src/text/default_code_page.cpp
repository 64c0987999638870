// The system's default code pages, which the environment tells.

#include <winnls.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "text/code_page.h"

namespace qxplatform
{

namespace
{

constexpr UINT LATIN_1_PAGE = 1252;

// The variable that sets the character type, by the rule of POSIX: the first of the three that is not empty.
std::string_view CharacterTypeLocale()
{
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const char* const value = std::getenv(name); value != nullptr && *value != '\0')
            return value;
    return {};
}

// "de_DE.UTF-8@euro" names its encoding between the point and the at sign, in any case, with or without the hyphen.
bool NamesUtf8(std::string_view locale)
{
    const std::size_t point = locale.find('.');
    if (point == locale.npos)
        return false;
    std::string_view encoding = locale.substr(point + 1);
    encoding = encoding.substr(0, encoding.find('@'));
    for (const char* name : {"utf-8", "utf8"})
        if (encoding.size() == std::strlen(name) && strncasecmp(encoding.data(), name, encoding.size()) == 0)
            return true;
    return false;
}

UINT FromEnvironment()
{
    if (const char* const setting = std::getenv("QXPLATFORM_ACP"))
    {
        UINT page = 0;
        const char* const end = setting + std::strlen(setting);
        const auto [stop, error] = std::from_chars(setting, end, page);
        if (error == std::errc{} && stop == end && IsCodePageOffered(page))
            return page;
    }
    return NamesUtf8(CharacterTypeLocale()) ? CP_UTF8 : LATIN_1_PAGE;
}

} // namespace

// Read once: the system's default page does not change under a running process either.
UINT DefaultCodePage()
{
    static const UINT page = FromEnvironment();
    return page;
}

// The console page that the system pairs with each default page.
UINT DefaultOemCodePage()
{
    switch (const UINT page = DefaultCodePage())
    {
    case 1250:
        return 852;
    case 1251:
        return 866;
    case 1252:
        return 437;
    case 1253:
        return 737;
    case 1254:
        return 857;
    case 1255:
        return 862;
    case 1257:
        return 775;
    default:
        return page;
    }
}

} // namespace qxplatform

UINT WINAPI GetACP(void)
{
    return qxplatform::DefaultCodePage();
}

UINT WINAPI GetOEMCP(void)
{
    return qxplatform::DefaultOemCodePage();
}
