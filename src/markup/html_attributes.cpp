#include "markup/html_attributes.h"

#include <algorithm>

namespace qx
{

void HtmlAttributeReader::SkipSpace()
{
    while (_at < _text.size() && IsHtmlSpace(_text[_at]))
        ++_at;
}

bool HtmlAttributeReader::Next()
{
    while (_at < _text.size() && (IsHtmlSpace(_text[_at]) || _text[_at] == L'/'))
        ++_at;
    if (_at == _text.size() || _text[_at] == L'>')
        return false;

    const std::size_t start = _at++; // "=" may begin a name
    while (_at < _text.size() && !IsHtmlSpace(_text[_at]) && _text[_at] != L'/' && _text[_at] != L'>' &&
           _text[_at] != L'=')
        ++_at;
    _name = _text.substr(start, _at - start);
    _value = {};
    SkipSpace();
    if (_at == _text.size() || _text[_at] != L'=')
        return true;
    ++_at;
    SkipSpace();
    return ReadValue();
}

// An open quotation runs to the end of the text, and the tag with it.
bool HtmlAttributeReader::ReadValue()
{
    if (_at == _text.size())
        return false;
    const wchar_t quote = _text[_at];
    if (quote == L'"' || quote == L'\'')
    {
        const std::size_t start = _at + 1;
        const std::size_t end = _text.find(quote, start);
        _at = end == _text.npos ? _text.size() : end + 1;
        if (end == _text.npos)
            return false;
        _value = _text.substr(start, end - start);
        return true;
    }
    const std::size_t start = _at;
    while (_at < _text.size() && !IsHtmlSpace(_text[_at]) && _text[_at] != L'>')
        ++_at;
    _value = _text.substr(start, _at - start);
    return true;
}

bool EqualsHtmlName(std::wstring_view name, std::wstring_view lower)
{
    return std::equal(name.begin(), name.end(), lower.begin(), lower.end(),
        [](wchar_t a, wchar_t b) { return (a >= L'A' && a <= L'Z' ? a + (L'a' - L'A') : a) == b; });
}

std::optional<std::wstring_view> FindHtmlAttribute(std::wstring_view attributes, std::wstring_view name)
{
    HtmlAttributeReader reader(attributes);
    while (reader.Next())
        if (EqualsHtmlName(reader.Name(), name))
            return reader.Value();
    return std::nullopt;
}

} // namespace qx
