// The attributes of a start tag, read as HTML tokenizes them.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace qx
{

constexpr bool IsHtmlSpace(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r' && c != L'\v');
}

// Reads one attribute after the other, up to the ">" that ends the tag, or the end of the text.
class HtmlAttributeReader
{
public:
    // The text behind the name of the tag.
    explicit HtmlAttributeReader(std::wstring_view text) : _text(text) {}

    // Reads the next attribute; false if there is none.
    bool Next();

    std::wstring_view Name() const { return _name; }
    std::wstring_view Value() const { return _value; } // without quotes, with references

    // The position of the ">", or the length of the text if the tag doesn't end. Valid once Next has returned false.
    std::size_t Position() const { return _at; }

private:
    void SkipSpace();
    bool ReadValue();

    std::wstring_view _text;
    std::size_t _at = 0;
    std::wstring_view _name;
    std::wstring_view _value;
};

// Compares without regard to the case of A to Z; `lower` has none of these.
bool EqualsHtmlName(std::wstring_view name, std::wstring_view lower);

// The value of the first attribute with that name (lower case), with references.
std::optional<std::wstring_view> FindHtmlAttribute(std::wstring_view attributes, std::wstring_view name);

} // namespace qx
