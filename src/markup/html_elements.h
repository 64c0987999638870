// Classifies the elements of HTML by their effect on the text of a page.
#pragma once

#include <string_view>

namespace qx
{

enum class HtmlElement : unsigned char
{
    other, // no effect: inline and unknown elements

    // Blocks.
    block,     // begins and ends a line
    paragraph, // begins and ends with a blank line
    rule,
    preformatted,
    quote,
    unorderedList,
    orderedList,
    item,
    definitionList,
    term,
    definition,
    table,
    row,
    cell,

    // Inline.
    lineBreak,
    quotation,
    anchor,
    image,
    input,
    option,

    // Elements with raw content.
    title,           // text with references
    textArea,        // text with references, and with its line breaks
    rawPreformatted, // shown as it is
    script,          // hidden; has its own rules for its end
    rawHidden,
    plainText, // never ends

    templateContent // hidden
};

// Looks up the name of a tag, ignoring case.
HtmlElement FindHtmlElement(std::wstring_view name);

} // namespace qx
