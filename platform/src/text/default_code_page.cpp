// The system's default code pages, determined by the environment.

#include <winnls.h>

#include <strings.h>

#include <charconv>
#include <string_view>

#include "base/environment.h"
#include "base/forever.h"
#include "text/code_page.h"
#include "text/posix_locale.h"

namespace qxplatform
{

namespace
{

constexpr UINT kLatin1Page = 1252;

// Compares without regard to case. The hyphen is optional.
bool IsUtf8(std::string_view encoding)
{
    for (const std::string_view name : {"utf-8", "utf8"})
        if (encoding.size() == name.size() && strncasecmp(encoding.data(), name.data(), name.size()) == 0)
            return true;
    return false;
}

UINT FromEnvironment()
{
    const std::string setting = EnvironmentValue("QXPLATFORM_ACP");
    UINT page = 0;
    const char* const end = setting.data() + setting.size();
    const auto [stop, error] = std::from_chars(setting.data(), end, page);
    if (error == std::errc{} && stop == end && IsCodePageOffered(page))
        return page;
    const std::string locale = PosixLocaleOf("LC_CTYPE");
    return IsUtf8(EncodingOfPosixLocale(locale)) ? CP_UTF8 : kLatin1Page;
}

} // namespace

// Read once, because the system's default page never changes while a process runs.
UINT DefaultCodePage()
{
    static constinit Forever<UINT> page;
    return page.Get(&FromEnvironment);
}

// Returns the console page that the system combines with the default page.
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
