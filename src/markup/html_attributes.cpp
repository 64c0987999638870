#include "markup/html_attributes.h"

#include "markup/html_characters.h"

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

    const std::size_t start = _at++; // a name may begin with "="
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

// Without a closing quote, the value and therefore the tag extend to the end of the text.
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

std::optional<std::wstring_view> FindHtmlAttribute(std::wstring_view attributes, std::wstring_view name)
{
    HtmlAttributeReader reader(attributes);
    while (reader.Next())
        if (EqualsHtmlName(reader.Name(), name))
            return reader.Value();
    return std::nullopt;
}

} // namespace qx
