#include "markup/html_elements.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qx
{
namespace
{

constexpr std::size_t kLongestElement = 10; // in the table

// Packs a name into a number, six bits for each letter or digit. Returns 0 for names that cannot be in the table.
template <class Character>
constexpr std::uint64_t KeyOfName(std::basic_string_view<Character> name)
{
    if (name.size() > kLongestElement)
        return 0;
    std::uint64_t key = 0;
    for (const Character c : name)
    {
        unsigned code = 0;
        if (c >= 'a' && c <= 'z')
            code = static_cast<unsigned>(c - 'a') + 1;
        else if (c >= 'A' && c <= 'Z')
            code = static_cast<unsigned>(c - 'A') + 1;
        else if (c >= '0' && c <= '9')
            code = static_cast<unsigned>(c - '0') + 27;
        else
            return 0;
        key = key << 6 | code;
    }
    return key;
}

struct ElementRow
{
    std::string_view name;
    HtmlElement element;
};

constexpr ElementRow kElementRows[] = {
    {"address", HtmlElement::Block},
    {"article", HtmlElement::Block},
    {"aside", HtmlElement::Block},
    {"body", HtmlElement::Block},
    {"caption", HtmlElement::Block},
    {"center", HtmlElement::Block},
    {"details", HtmlElement::Block},
    {"dialog", HtmlElement::Block},
    {"div", HtmlElement::Block},
    {"fieldset", HtmlElement::Block},
    {"figcaption", HtmlElement::Block},
    {"figure", HtmlElement::Block},
    {"footer", HtmlElement::Block},
    {"form", HtmlElement::Block},
    {"header", HtmlElement::Block},
    {"hgroup", HtmlElement::Block},
    {"html", HtmlElement::Block},
    {"legend", HtmlElement::Block},
    {"main", HtmlElement::Block},
    {"nav", HtmlElement::Block},
    {"search", HtmlElement::Block},
    {"section", HtmlElement::Block},
    {"summary", HtmlElement::Block},
    {"h1", HtmlElement::Paragraph},
    {"h2", HtmlElement::Paragraph},
    {"h3", HtmlElement::Paragraph},
    {"h4", HtmlElement::Paragraph},
    {"h5", HtmlElement::Paragraph},
    {"h6", HtmlElement::Paragraph},
    {"p", HtmlElement::Paragraph},
    {"hr", HtmlElement::Rule},
    {"listing", HtmlElement::Preformatted},
    {"pre", HtmlElement::Preformatted},
    {"blockquote", HtmlElement::Quote},
    {"dir", HtmlElement::UnorderedList},
    {"menu", HtmlElement::UnorderedList},
    {"ul", HtmlElement::UnorderedList},
    {"ol", HtmlElement::OrderedList},
    {"li", HtmlElement::Item},
    {"dl", HtmlElement::DefinitionList},
    {"dt", HtmlElement::Term},
    {"dd", HtmlElement::Definition},
    {"table", HtmlElement::Table},
    {"tr", HtmlElement::Row},
    {"td", HtmlElement::Cell},
    {"th", HtmlElement::Cell},
    {"br", HtmlElement::LineBreak},
    {"q", HtmlElement::Quotation},
    {"a", HtmlElement::Anchor},
    {"img", HtmlElement::Image},
    {"input", HtmlElement::Input},
    {"optgroup", HtmlElement::Option},
    {"option", HtmlElement::Option},
    {"title", HtmlElement::Title},
    {"textarea", HtmlElement::TextArea},
    {"xmp", HtmlElement::RawPreformatted},
    {"script", HtmlElement::Script},
    {"iframe", HtmlElement::RawHidden},
    {"noembed", HtmlElement::RawHidden},
    {"noframes", HtmlElement::RawHidden},
    {"style", HtmlElement::RawHidden},
    {"plaintext", HtmlElement::PlainText},
    {"template", HtmlElement::TemplateContent},
};

struct KeyedElement
{
    std::uint64_t key;
    HtmlElement element;
};

// A hash table with linear probing, at most half full.
constexpr std::size_t kElementBuckets = 256;
constexpr std::size_t BucketOfKey(std::uint64_t key)
{
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15u >> 56);
}
constexpr auto kElementTable = []
{
    static_assert(std::size(kElementRows) * 2 <= kElementBuckets);
    std::array<KeyedElement, kElementBuckets> table{};
    for (const ElementRow& row : kElementRows)
    {
        const std::uint64_t key = KeyOfName(row.name);
        std::size_t bucket = BucketOfKey(key);
        while (table[bucket].key != 0)
            bucket = (bucket + 1) % kElementBuckets;
        table[bucket] = {key, row.element};
    }
    return table;
}();

} // namespace

HtmlElement FindHtmlElement(std::wstring_view name)
{
    const std::uint64_t key = KeyOfName(name);
    for (std::size_t bucket = BucketOfKey(key);; bucket = (bucket + 1) % kElementBuckets)
    {
        if (kElementTable[bucket].key == key)
            return kElementTable[bucket].element; // key 0 is found in an empty bucket, whose element is Other
        if (kElementTable[bucket].key == 0)
            return HtmlElement::Other;
    }
}

} // namespace qx
