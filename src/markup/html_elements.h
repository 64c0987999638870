// Classifies the elements of HTML by their effect on the text of a page.
#pragma once

#include <string_view>

namespace qx
{

enum class HtmlElement : unsigned char
{
    Other, // no effect: inline and unknown elements

    // Blocks.
    Block,     // begins and ends a line
    Paragraph, // begins and ends with a blank line
    Rule,
    Preformatted,
    Quote,
    UnorderedList,
    OrderedList,
    Item,
    DefinitionList,
    Term,
    Definition,
    Table,
    Row,
    Cell,

    // Inline.
    LineBreak,
    Quotation,
    Anchor,
    Image,
    Input,
    Option,

    // Elements with raw content.
    Title,           // text with references
    TextArea,        // text with references, and with its line breaks
    RawPreformatted, // shown as it is
    Script,          // hidden; has its own rules for its end
    RawHidden,
    PlainText, // never ends

    TemplateContent // hidden
};

// Looks up the name of a tag, ignoring case.
HtmlElement FindHtmlElement(std::wstring_view name);

} // namespace qx
