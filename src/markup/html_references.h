// Character references of HTML ("&auml;", "&#228;", "&amp"), resolved according to section 13.2.5.72 of the HTML Living
// Standard.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qx
{

struct HtmlReference
{
    std::size_t length = 0; // of the reference in the source; 0 if the text begins with none
    std::array<wchar_t, 2> units{};
    std::size_t count = 0; // of the units: one character or two, or a surrogate pair

    std::wstring_view Units() const { return {units.data(), count}; }
};

// Resolves the reference at the start of `text`, which begins with an ampersand. In an attribute value a name without a
// semicolon is not a reference if a letter, a digit or "=" follows, so that query strings of links stay intact.
HtmlReference ReadHtmlReference(std::wstring_view text, bool inAttribute);

} // namespace qx
