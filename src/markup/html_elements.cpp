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
    {"address", HtmlElement::block},
    {"article", HtmlElement::block},
    {"aside", HtmlElement::block},
    {"body", HtmlElement::block},
    {"caption", HtmlElement::block},
    {"center", HtmlElement::block},
    {"details", HtmlElement::block},
    {"dialog", HtmlElement::block},
    {"div", HtmlElement::block},
    {"fieldset", HtmlElement::block},
    {"figcaption", HtmlElement::block},
    {"figure", HtmlElement::block},
    {"footer", HtmlElement::block},
    {"form", HtmlElement::block},
    {"header", HtmlElement::block},
    {"hgroup", HtmlElement::block},
    {"html", HtmlElement::block},
    {"legend", HtmlElement::block},
    {"main", HtmlElement::block},
    {"nav", HtmlElement::block},
    {"search", HtmlElement::block},
    {"section", HtmlElement::block},
    {"summary", HtmlElement::block},
    {"h1", HtmlElement::paragraph},
    {"h2", HtmlElement::paragraph},
    {"h3", HtmlElement::paragraph},
    {"h4", HtmlElement::paragraph},
    {"h5", HtmlElement::paragraph},
    {"h6", HtmlElement::paragraph},
    {"p", HtmlElement::paragraph},
    {"hr", HtmlElement::rule},
    {"listing", HtmlElement::preformatted},
    {"pre", HtmlElement::preformatted},
    {"blockquote", HtmlElement::quote},
    {"dir", HtmlElement::unorderedList},
    {"menu", HtmlElement::unorderedList},
    {"ul", HtmlElement::unorderedList},
    {"ol", HtmlElement::orderedList},
    {"li", HtmlElement::item},
    {"dl", HtmlElement::definitionList},
    {"dt", HtmlElement::term},
    {"dd", HtmlElement::definition},
    {"table", HtmlElement::table},
    {"tr", HtmlElement::row},
    {"td", HtmlElement::cell},
    {"th", HtmlElement::cell},
    {"br", HtmlElement::lineBreak},
    {"q", HtmlElement::quotation},
    {"a", HtmlElement::anchor},
    {"img", HtmlElement::image},
    {"input", HtmlElement::input},
    {"optgroup", HtmlElement::option},
    {"option", HtmlElement::option},
    {"title", HtmlElement::title},
    {"textarea", HtmlElement::textArea},
    {"xmp", HtmlElement::rawPreformatted},
    {"script", HtmlElement::script},
    {"iframe", HtmlElement::rawHidden},
    {"noembed", HtmlElement::rawHidden},
    {"noframes", HtmlElement::rawHidden},
    {"style", HtmlElement::rawHidden},
    {"plaintext", HtmlElement::plainText},
    {"template", HtmlElement::templateContent},
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
            return kElementTable[bucket].element; // key 0 ends at an empty bucket, which contains `other`
        if (kElementTable[bucket].key == 0)
            return HtmlElement::other;
    }
}

} // namespace qx
