// HTML split into text and tags, as section 13.2.5 of the HTML Living Standard says: comments, tags and the content of
// scripts end where a browser ends them. Time is linear in the length of the text, and nothing is copied.
#pragma once

#include "markup/html_elements.h"

#include <cstddef>
#include <string_view>

namespace qx
{

struct HtmlToken
{
    enum class Kind : unsigned char
    {
        end,
        text,
        startTag,
        endTag
    };

    Kind kind = Kind::end;
    HtmlElement element = HtmlElement::other; // of a tag; of raw text the element whose content it is
    std::wstring_view text;                   // of text: as written, with references; of a start tag: its attributes
};

class HtmlTokenizer
{
public:
    // `html` must outlive the tokens.
    explicit HtmlTokenizer(std::wstring_view html) : _html(html) {}

    // Returns tokens of the kind `end` once the text is used up. Comments, document types and the like are skipped.
    HtmlToken Next();

private:
    wchar_t At(std::size_t i) const { return i < _html.size() ? _html[i] : L'\0'; }
    bool BeginsMarkup(std::size_t less) const;
    std::wstring_view ReadText();
    bool ReadMarkup(HtmlToken& token);
    bool ReadTag(HtmlToken& token);
    void SkipComment();
    HtmlToken ReadRawText();
    bool IsTagAt(std::size_t less, bool closing, std::wstring_view name) const;
    std::size_t FindEndTag() const;
    std::size_t FindScriptEnd() const;

    std::wstring_view _html;
    std::size_t _at = 0;
    HtmlElement _rawElement = HtmlElement::other; // whose content comes next, if it is no markup
    std::wstring_view _rawName;                   // as written
};

} // namespace qx
