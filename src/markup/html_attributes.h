// Reads the attributes of a tag as the HTML standard tokenizes them.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace qx
{

// Iterates over the attributes up to the ">" that ends the tag, or to the end of the text.
class HtmlAttributeReader
{
public:
    // `text` begins after the name of the tag.
    explicit HtmlAttributeReader(std::wstring_view text) : _text(text) {}

    // Advances to the next attribute. Returns false if there is none.
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

// Returns the value of the first attribute with that name (in lower case), with unresolved references.
std::optional<std::wstring_view> FindHtmlAttribute(std::wstring_view attributes, std::wstring_view name);

} // namespace qx
