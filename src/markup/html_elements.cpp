#include "markup/html_elements.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qx
{
namespace
{

constexpr std::size_t kLongestName = 10; // of those in the table

// A name of letters and digits packed into a number, six bits each; 0 if it is none of the table for certain.
template <class Character>
constexpr std::uint64_t Key(std::basic_string_view<Character> name)
{
    if (name.size() > kLongestName)
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

struct Row
{
    std::string_view name;
    HtmlElement element;
};

constexpr Row kRows[] = {
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

struct KeyedRow
{
    std::uint64_t key;
    HtmlElement element;
};

// An open hash table, half full at most.
constexpr std::size_t kBuckets = 256;
constexpr std::size_t BucketOf(std::uint64_t key)
{
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15u >> 56);
}
constexpr auto kTable = []
{
    static_assert(std::size(kRows) * 2 <= kBuckets);
    std::array<KeyedRow, kBuckets> table{};
    for (const Row& row : kRows)
    {
        const std::uint64_t key = Key(row.name);
        std::size_t bucket = BucketOf(key);
        while (table[bucket].key != 0)
            bucket = (bucket + 1) % kBuckets;
        table[bucket] = {key, row.element};
    }
    return table;
}();

} // namespace

HtmlElement FindHtmlElement(std::wstring_view name)
{
    const std::uint64_t key = Key(name);
    for (std::size_t bucket = BucketOf(key);; bucket = (bucket + 1) % kBuckets)
    {
        if (kTable[bucket].key == key)
            return kTable[bucket].element; // an empty bucket, found for key 0, has `other`
        if (kTable[bucket].key == 0)
            return HtmlElement::other;
    }
}

} // namespace qx
