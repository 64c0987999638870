// Lays out the tokens of a page as plain text: implements the effect of each element on lines, lists, tables and links.
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
    // Deeper levels share the state of the deepest level that is stored.
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
        bool hasCell;         // the current row has an open cell
        std::size_t rowStart; // length of the text before the row
        // The numbers of open lists and pre elements outside the table, restored at the end of each cell.
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
    std::size_t _templates = 0;    // number of open templates, whose content is hidden
    std::size_t _preformatted = 0; // number of open pre elements
    bool _skipsLineFeed = false;   // set directly after <pre>

    std::array<List, kMaxListDepth> _lists;
    std::size_t _listDepth = 0;
    std::size_t _surplusLists = 0; // number of open lists beyond the array
    std::size_t _indentation = 0;
    std::array<Table, kMaxTableDepth> _tables;
    std::size_t _tableDepth = 0;
    std::size_t _surplusTables = 0;

    std::optional<std::wstring_view> _target; // of the open link
    std::size_t _linkStart = 0;
};

} // namespace qx
