// Lays the tokens of a page out as plain text: what each element means for lines, lists, tables and links.
#pragma once

#include "markup/html_tokenizer.h"
#include "markup/list_marker.h"
#include "markup/page_writer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qx
{

class PageLayout
{
public:
    // `expected` is the likely length of the text.
    PageLayout(std::size_t expected, bool showsLinks) : _writer(expected), _showsLinks(showsLinks) {}

    void Add(const HtmlToken& token);
    String Take();

private:
    // Nesting beyond these depths is laid out like the deepest level that is kept.
    static constexpr std::size_t kMaxListDepth = 64;
    static constexpr std::size_t kMaxTableDepth = 32;
    static constexpr std::size_t kMaxIndentation = 32;

    // An open list, or a quotation.
    struct List
    {
        HtmlElement element;
        ListNumbering numbering;
        std::int32_t next; // number of an item
        unsigned char indentation;
    };
    struct Table
    {
        bool hasCell;         // in this row
        std::size_t rowStart; // length of the text before the row
        // As they were outside; what is left open in a cell ends with it.
        std::size_t lists;
        std::size_t preformatted;
    };

    void AddText(const HtmlToken& token);
    void StartTag(HtmlElement element, std::wstring_view attributes);
    void EndTag(HtmlElement element);
    void Separate(HtmlElement element);

    void StartList(HtmlElement element, std::wstring_view attributes);
    void EndList(HtmlElement element);
    void StartItem(std::wstring_view attributes);
    void StartDefinition(bool indented);
    void UpdateIndentation();

    void StartTable();
    void EndTable();
    void StartRow();
    void StartCell();
    void EndCell();
    void EndRow();

    void StartLink(std::wstring_view attributes);
    void EndLink();
    void WriteAttribute(std::wstring_view attributes, std::wstring_view name);
    void WriteInput(std::wstring_view attributes);

    PageWriter _writer;
    const bool _showsLinks;
    std::size_t _templates = 0;    // open ones, whose content is hidden
    std::size_t _preformatted = 0; // open ones
    bool _skipsLineFeed = false;   // directly behind <pre>

    std::array<List, kMaxListDepth> _lists;
    std::size_t _listDepth = 0;
    std::size_t _surplusLists = 0; // open ones beyond the array
    std::size_t _indentation = 0;
    std::array<Table, kMaxTableDepth> _tables;
    std::size_t _tableDepth = 0;
    std::size_t _surplusTables = 0;

    std::optional<std::wstring_view> _target; // of the open link
    std::size_t _linkStart = 0;
};

} // namespace qx
