#include "markup/page_text.h"

#include "markup/html_tokenizer.h"
#include "markup/page_layout.h"

namespace qx
{

String PageText(std::wstring_view html, bool showsLinks)
{
    HtmlTokenizer tokenizer(html);
    PageLayout layout(html.size(), showsLinks);
    for (HtmlToken token = tokenizer.Next(); token.kind != HtmlToken::Kind::End; token = tokenizer.Next())
        layout.Add(token);
    return layout.Take();
}

} // namespace qx
