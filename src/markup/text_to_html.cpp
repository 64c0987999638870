#include "markup/text_to_html.h"

#include "markup/html_mask.h"

namespace qx
{
namespace
{

String MakeTag(const String& name, bool open, int mode)
{
    String tag(mode == 0 ? L"<" : L"[_[");
    if (!open)
        tag += L'/';
    tag += name;
    tag += mode == 0 ? L">" : L"]_]";
    return tag;
}

} // namespace

String TextToHtml(const wchar_t* text, bool placeholders)
{
    const String open = MakeTag(L"p", true, placeholders);
    const String close = MakeTag(L"p", false, placeholders);

    // Guillemets are doubled, because HtmlToText removes the outermost pair.
    String html(text);
    html.Replace(L"\u00AB", L"\u00AB\u00AB");
    html.Replace(L"\u00BB", L"\u00BB\u00BB");

    html = MaskHtml(html.Text());
    html.Replace(L"\r\n", close + open);
    html.Replace(L"\r", close + open);
    html = open + html + close;
    if (!placeholders)
        html.Replace(L"<p></p>", L"<p><br></p>");
    return html;
}

} // namespace qx
