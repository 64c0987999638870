// The text of HTML pages.
#include <qxut23/page_text.h>

#include "exports/guard.h"
#include "markup/html_escape.h"
#include "markup/page_text.h"

#include <cstdint>
#include <string_view>

using namespace qx;

namespace
{

// Runs a conversion and returns its result through `result`. Does nothing if `result` is null.
template <class Convert>
std::int32_t Store(const QXWCHAR* text, QXWCHAR** result, Convert convert)
{
    if (!result)
        return QXUT_PAGE_OK;
    return Guarded(QXUT_PAGE_NO_MEMORY,
        [&]
        {
            const String converted = convert(text ? std::wstring_view(text) : std::wstring_view());
            return converted.ToBSTR(result) ? QXUT_PAGE_OK : QXUT_PAGE_NO_MEMORY;
        });
}

} // namespace

std::int32_t QxConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, std::uint32_t flags)
{
    if ((flags & ~QXUT_PAGE_LINKS) != 0)
        return QXUT_PAGE_BAD_FLAGS;
    return Store(html, text, [=](std::wstring_view page) { return PageText(page, (flags & QXUT_PAGE_LINKS) != 0); });
}

std::int32_t QxMaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result)
{
    return Store(text, result, EscapeHtml);
}

std::int32_t QxDemaskHtmlCharacters(const QXWCHAR* text, QXWCHAR** result)
{
    return Store(text, result, [](std::wstring_view masked) { return UnescapeHtml(masked); });
}
