// The elements of HTML by what they do to the text of a page.
#pragma once

#include <string_view>

namespace qx
{

enum class HtmlElement : unsigned char
{
    other, // leaves no trace: inline elements, and unknown ones

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

    // Content that is no markup.
    title,           // text with references
    textArea,        // text with references, and with its line breaks
    rawPreformatted, // shown as it is
    script,          // hidden; ends by rules of its own
    rawHidden,
    plainText, // never ends

    templateContent // hidden
};

// By the name of a tag as written, without regard to case.
HtmlElement FindHtmlElement(std::wstring_view name);

} // namespace qx
