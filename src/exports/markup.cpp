// Text to HTML and back.
#include <qxut23/markup.h>

#include "exports/guard.h"
#include "markup/html_mask.h"
#include "markup/html_to_text.h"
#include "markup/text_to_html.h"

#include <cstdint>

using namespace qx;

namespace
{

// Runs a conversion and returns its result through `result`. Does nothing if `result` is null.
template <class Convert>
void Deliver(const QXWCHAR* text, QXWCHAR** result, Convert convert)
{
    if (result)
        Guarded([&] { convert(text ? text : L"").ToBSTR(result); });
}

} // namespace

void UtilMaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result)
{
    Deliver(text, result, MaskHtml);
}

void UtilDemaskAllHTMLCharacters(const QXWCHAR* text, QXWCHAR** result)
{
    Deliver(text, result, DemaskHtml);
}

void UtilConvertText2HTML(const QXWCHAR* text, QXWCHAR** result, std::uint32_t flags)
{
    Deliver(text, result, [flags](const QXWCHAR* plain) { return TextToHtml(plain, flags != 0); });
}

void UtilConvertHtml2PlainText(const QXWCHAR* html, QXWCHAR** text, std::uint32_t flags)
{
    Deliver(html, text, [flags](const QXWCHAR* markup) { return HtmlToText(markup, flags != 0); });
}
