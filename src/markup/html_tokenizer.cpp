#include "markup/html_tokenizer.h"

#include "markup/html_attributes.h"
#include "markup/html_characters.h"

#include <algorithm>

namespace qx
{
namespace
{

constexpr bool EndsTagName(wchar_t c)
{
    return IsHtmlSpace(c) || c == L'/' || c == L'>';
}

constexpr bool HasRawContent(HtmlElement element)
{
    return element >= HtmlElement::Title && element <= HtmlElement::PlainText;
}

} // namespace

HtmlToken HtmlTokenizer::Next()
{
    if (_rawElement != HtmlElement::Other)
        return ReadRawText();
    HtmlToken token;
    while (_at < _html.size())
    {
        token.text = ReadText();
        if (!token.text.empty())
        {
            token.kind = HtmlToken::Kind::Text;
            return token;
        }
        if (ReadMarkup(token))
            return token;
    }
    return token;
}

bool HtmlTokenizer::BeginsMarkup(std::size_t less) const
{
    const wchar_t next = At(less + 1);
    return IsHtmlLetter(next) || next == L'!' || next == L'?' || (next == L'/' && less + 2 < _html.size());
}

std::wstring_view HtmlTokenizer::ReadText()
{
    const std::size_t start = _at;
    while ((_at = FindHtmlCharacter(_html, L'<', _at)) != _html.size() && !BeginsMarkup(_at))
        ++_at;
    return _html.substr(start, _at - start);
}

// Reads markup at a "<". Returns false if it produces no token.
bool HtmlTokenizer::ReadMarkup(HtmlToken& token)
{
    const wchar_t next = At(_at + 1);
    if (IsHtmlLetter(next) || (next == L'/' && IsHtmlLetter(At(_at + 2))))
        return ReadTag(token);
    if (_html.substr(_at, 4) == L"<!--")
        SkipComment();
    else // a document type, a processing instruction or malformed markup
        _at = std::min(_html.find(L'>', _at), _html.size() - 1) + 1;
    return false;
}

// "<!-->" and "<!--->" are comments too.
void HtmlTokenizer::SkipComment()
{
    const std::size_t start = _at + 4;
    std::size_t end = start - 1;
    while ((end = _html.find(L'>', end + 1)) != _html.npos)
    {
        const std::wstring_view before = _html.substr(start - 2, end - (start - 2));
        const bool dashes = before.ends_with(L"--");
        if (dashes || (before.ends_with(L"--!") && before.size() >= 5))
            break;
    }
    _at = end == _html.npos ? _html.size() : end + 1;
}

// An unterminated tag is dropped together with the rest of the text.
bool HtmlTokenizer::ReadTag(HtmlToken& token)
{
    const bool closing = _html[_at + 1] == L'/';
    const std::size_t nameStart = _at + (closing ? 2 : 1);
    std::size_t nameEnd = nameStart + 1;
    while (nameEnd < _html.size() && !EndsTagName(_html[nameEnd]))
        ++nameEnd;
    const std::wstring_view name = _html.substr(nameStart, nameEnd - nameStart);
    const std::wstring_view rest = _html.substr(nameEnd);
    HtmlAttributeReader attributes(rest);
    while (attributes.Next())
    {
    }
    const std::size_t end = attributes.Position();
    _at = nameEnd + end;
    if (_at == _html.size())
        return false;
    ++_at;

    token.element = FindHtmlElement(name);
    token.kind = closing ? HtmlToken::Kind::EndTag : HtmlToken::Kind::StartTag;
    if (!closing)
        token.text = rest.substr(0, end);
    if (!closing && HasRawContent(token.element))
    {
        _rawElement = token.element;
        _rawName = name;
    }
    return true;
}

// Reads the content of an element in which markup isn't recognised. The token may be empty.
HtmlToken HtmlTokenizer::ReadRawText()
{
    std::size_t end = _html.size();
    if (_rawElement == HtmlElement::Script)
        end = FindScriptEnd();
    else if (_rawElement != HtmlElement::PlainText)
        end = FindEndTag();
    const HtmlToken token{HtmlToken::Kind::Text, _rawElement, _html.substr(_at, end - _at)};
    _at = end;
    _rawElement = HtmlElement::Other;
    return token;
}

bool HtmlTokenizer::IsTagAt(std::size_t less, bool closing, std::wstring_view name) const
{
    const std::size_t start = less + (closing ? 2 : 1);
    if (closing && At(less + 1) != L'/')
        return false;
    const std::wstring_view found = _html.substr(std::min(start, _html.size()), name.size());
    return start + name.size() < _html.size() && EndsTagName(_html[start + name.size()]) && EqualsHtmlName(found, name);
}

std::size_t HtmlTokenizer::FindEndTag() const
{
    std::size_t less = _at;
    while ((less = _html.find(L'<', less)) != _html.npos && !IsTagAt(less, true, _rawName))
        ++less;
    return std::min(less, _html.size());
}

// A script may contain complete script elements between "<!--" and "-->".
std::size_t HtmlTokenizer::FindScriptEnd() const
{
    enum
    {
        kPlain,
        kEscaped,
        kDoubleEscaped
    } state = kPlain;
    for (std::size_t at = _at; at < _html.size(); ++at)
    {
        if (_html[at] == L'-')
        {
            if (state != kPlain && _html.substr(at, 3) == L"-->")
                state = kPlain;
            continue;
        }
        if (_html[at] != L'<')
            continue;
        if (state == kPlain && _html.substr(at, 4) == L"<!--")
        {
            state = kEscaped;
            ++at; // the dashes may be part of "-->" too
        }
        else if (state == kEscaped && IsTagAt(at, false, _rawName))
            state = kDoubleEscaped;
        else if (IsTagAt(at, true, _rawName))
        {
            if (state != kDoubleEscaped)
                return at;
            state = kEscaped;
        }
    }
    return _html.size();
}

} // namespace qx
