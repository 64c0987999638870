// Splits HTML into text and tags according to section 13.2.5 of the HTML Living Standard, so that comments, tags and
// scripts end where a browser ends them. Runs in linear time and copies nothing.
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
        End,
        Text,
        StartTag,
        EndTag
    };

    Kind kind = Kind::End;
    HtmlElement element = HtmlElement::Other; // the element of a tag, or the element that contains raw text
    std::wstring_view text;                   // text with unresolved references, or the attributes of a start tag
};

class HtmlTokenizer
{
public:
    // `html` must outlive the tokens.
    explicit HtmlTokenizer(std::wstring_view html) : _html(html) {}

    // Returns the next token, or a token of the kind `end` at the end of the text. Skips comments and document types.
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
    HtmlElement _rawElement = HtmlElement::Other; // the element whose raw content follows, or Other
    std::wstring_view _rawName;                   // as written
};

} // namespace qx
