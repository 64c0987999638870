#include "markup/page_layout.h"

#include "markup/html_attributes.h"
#include "markup/html_characters.h"
#include "markup/html_escape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qx
{
namespace
{

constexpr unsigned char kListIndentation = 2;
constexpr unsigned char kNumberIndentation = 3;
constexpr unsigned char kQuoteIndentation = 4;

std::wstring_view TrimHtmlSpace(std::wstring_view text)
{
    while (!text.empty() && IsHtmlSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsHtmlSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

std::optional<std::int32_t> ReadInteger(std::wstring_view text)
{
    text = TrimHtmlSpace(text);
    const bool negative = text.starts_with(L'-');
    if (negative || text.starts_with(L'+'))
        text.remove_prefix(1);
    std::int64_t number = 0;
    std::size_t digits = 0;
    for (; digits < text.size() && IsHtmlDigit(text[digits]); ++digits)
        number = std::min<std::int64_t>(number * 10 + (text[digits] - L'0'), std::numeric_limits<std::int32_t>::max());
    if (digits == 0)
        return std::nullopt;
    return static_cast<std::int32_t>(negative ? -number : number);
}

std::optional<std::int32_t> ReadInteger(std::wstring_view attributes, std::wstring_view name)
{
    const auto value = FindHtmlAttribute(attributes, name);
    return value ? ReadInteger(*value) : std::nullopt;
}

ListNumbering ReadNumbering(std::wstring_view attributes)
{
    const std::wstring_view type = FindHtmlAttribute(attributes, L"type").value_or(L"");
    if (type == L"a")
        return ListNumbering::lowerLetters;
    if (type == L"A")
        return ListNumbering::upperLetters;
    if (type == L"i")
        return ListNumbering::lowerRoman;
    if (type == L"I")
        return ListNumbering::upperRoman;
    return ListNumbering::decimal;
}

} // namespace

void PageLayout::Add(const HtmlToken& token)
{
    if (_templates != 0)
    {
        if (token.element == HtmlElement::templateContent)
            token.kind == HtmlToken::Kind::startTag ? ++_templates : --_templates;
        return;
    }
    switch (token.kind)
    {
    case HtmlToken::Kind::text:
        return AddText(token);
    case HtmlToken::Kind::startTag:
        _skipsLineFeed = false;
        return StartTag(token.element, token.text);
    case HtmlToken::Kind::endTag:
        _skipsLineFeed = false;
        return EndTag(token.element);
    case HtmlToken::Kind::end:
        return;
    }
}

String PageLayout::Take()
{
    EndLink();
    _writer.EndMarkedText();
    return _writer.Take();
}

void PageLayout::AddText(const HtmlToken& token)
{
    std::wstring_view text = token.text;
    switch (token.element)
    {
    case HtmlElement::script:
    case HtmlElement::rawHidden:
        return;
    case HtmlElement::title: // only the title of the page is shown, not the titles of drawings
        if (_writer.Length() == 0)
            _writer.Text(text);
        return _writer.RequireBreaks(2);
    case HtmlElement::textArea:
    case HtmlElement::rawPreformatted:
    case HtmlElement::plainText:
        _writer.RequireBreaks(1);
        if (token.element == HtmlElement::textArea && (text.starts_with(L'\n') || text.starts_with(L"\r\n")))
            text.remove_prefix(text[0] == L'\r' ? 2 : 1);
        _writer.Verbatim(text, token.element == HtmlElement::textArea);
        return _writer.RequireBreaks(1);
    default:
        break;
    }
    if (_preformatted == 0)
        return _writer.Text(text);
    if (std::exchange(_skipsLineFeed, false) && (text[0] == L'\n' || text[0] == L'\r'))
        text.remove_prefix(text.starts_with(L"\r\n") ? 2 : 1);
    _writer.Verbatim(text, true);
}

// Applies the line breaks and blanks that an element has both at its start and at its end.
void PageLayout::Separate(HtmlElement element)
{
    switch (element)
    {
    case HtmlElement::block:
        return _writer.RequireBreaks(1);
    case HtmlElement::paragraph:
    case HtmlElement::preformatted:
    case HtmlElement::rule:
    case HtmlElement::quote:
        return _writer.RequireBreaks(2);
    case HtmlElement::lineBreak:
        return _writer.BreakLine();
    case HtmlElement::quotation:
        return _writer.Text(L"\"");
    case HtmlElement::option:
        return _writer.Space();
    default:
        return;
    }
}

void PageLayout::StartTag(HtmlElement element, std::wstring_view attributes)
{
    Separate(element);
    switch (element)
    {
    case HtmlElement::preformatted:
        ++_preformatted;
        _skipsLineFeed = true;
        return;
    case HtmlElement::quote:
    case HtmlElement::unorderedList:
    case HtmlElement::orderedList:
    case HtmlElement::definitionList:
        return StartList(element, attributes);
    case HtmlElement::item:
        return StartItem(attributes);
    case HtmlElement::term:
        return StartDefinition(false);
    case HtmlElement::definition:
        return StartDefinition(true);
    case HtmlElement::table:
        return StartTable();
    case HtmlElement::row:
        return StartRow();
    case HtmlElement::cell:
        return StartCell();
    case HtmlElement::anchor:
        return StartLink(attributes);
    case HtmlElement::image:
        return WriteAttribute(attributes, L"alt");
    case HtmlElement::input:
        return WriteInput(attributes);
    case HtmlElement::templateContent:
        ++_templates;
        return;
    default:
        return;
    }
}

void PageLayout::EndTag(HtmlElement element)
{
    Separate(element);
    switch (element)
    {
    case HtmlElement::preformatted:
        _preformatted -= _preformatted != 0;
        return;
    case HtmlElement::quote:
    case HtmlElement::unorderedList:
    case HtmlElement::orderedList:
    case HtmlElement::definitionList:
        return EndList(element);
    case HtmlElement::item:
        _writer.EndMarkedText();
        return _writer.RequireBreaks(1);
    case HtmlElement::table:
        return EndTable();
    case HtmlElement::row:
        return EndRow();
    case HtmlElement::anchor:
        return EndLink();
    default:
        return;
    }
}

void PageLayout::StartList(HtmlElement element, std::wstring_view attributes)
{
    const bool nested = _listDepth != 0;
    _writer.RequireBreaks(nested ? 1 : 2);
    if (_listDepth == kMaxListDepth)
    {
        ++_surplusLists;
        return;
    }
    List& list = _lists[_listDepth++];
    list = {element, ListNumbering::none, 1, 0};
    if (element == HtmlElement::orderedList)
    {
        list.numbering = ReadNumbering(attributes);
        list.next = ReadInteger(attributes, L"start").value_or(1);
        list.indentation = kNumberIndentation;
    }
    else if (element == HtmlElement::unorderedList)
        list.indentation = kListIndentation;
    else if (element == HtmlElement::quote)
        list.indentation = kQuoteIndentation;
    UpdateIndentation();
}

// Closes the innermost list of that kind in this cell, and all lists inside it.
void PageLayout::EndList(HtmlElement element)
{
    _writer.EndMarkedText();
    if (_surplusLists != 0)
    {
        --_surplusLists;
        return _writer.RequireBreaks(1);
    }
    const std::size_t outside = _tableDepth != 0 ? _tables[_tableDepth - 1].lists : 0;
    std::size_t depth = _listDepth;
    while (depth > outside && _lists[depth - 1].element != element)
        --depth;
    if (depth > outside)
        _listDepth = depth - 1;
    _writer.RequireBreaks(_listDepth != 0 ? 1 : 2);
    UpdateIndentation();
}

void PageLayout::StartItem(std::wstring_view attributes)
{
    _writer.EndMarkedText();
    _writer.RequireBreaks(1);
    List unlisted{HtmlElement::unorderedList, ListNumbering::none, 1, 0};
    const bool listed = _listDepth != 0 && (_lists[_listDepth - 1].element == HtmlElement::orderedList ||
                                               _lists[_listDepth - 1].element == HtmlElement::unorderedList);
    List& list = listed ? _lists[_listDepth - 1] : unlisted;
    std::int32_t number = list.next;
    if (list.numbering != ListNumbering::none)
    {
        number = ReadInteger(attributes, L"value").value_or(number);
        list.next = number == std::numeric_limits<std::int32_t>::max() ? number : number + 1;
    }
    _writer.Mark(_indentation - std::min<std::size_t>(_indentation, list.indentation), {list.numbering, number});
}

// Terms start at the margin of their list; definitions are indented.
void PageLayout::StartDefinition(bool indented)
{
    _writer.EndMarkedText();
    _writer.RequireBreaks(1);
    if (_listDepth == 0 || _lists[_listDepth - 1].element != HtmlElement::definitionList)
        return;
    _lists[_listDepth - 1].indentation = indented ? kQuoteIndentation : 0;
    UpdateIndentation();
}

void PageLayout::UpdateIndentation()
{
    _indentation = 0;
    for (std::size_t i = 0; i < _listDepth; ++i)
        _indentation += _lists[i].indentation;
    _indentation = std::min(_indentation, kMaxIndentation);
    _writer.Indent(_indentation);
}

void PageLayout::StartTable()
{
    _writer.RequireBreaks(1);
    if (_tableDepth == kMaxTableDepth)
    {
        ++_surplusTables;
        return;
    }
    _tables[_tableDepth++] = {false, _writer.Length(), _listDepth, _preformatted};
}

void PageLayout::EndTable()
{
    if (_tableDepth == 0)
        return;
    EndRow();
    if (_surplusTables != 0)
        --_surplusTables;
    else
        --_tableDepth;
}

// Closes all elements that the cell left open.
void PageLayout::EndCell()
{
    const Table& table = _tables[_tableDepth - 1];
    EndLink();
    _preformatted = table.preformatted;
    if (_listDepth == table.lists)
        return;
    _writer.EndMarkedText();
    _surplusLists = 0;
    _listDepth = table.lists;
    UpdateIndentation();
}

void PageLayout::EndRow()
{
    if (_tableDepth == 0)
        return;
    Table& table = _tables[_tableDepth - 1];
    if (table.hasCell)
    {
        EndCell();
        _writer.EndRow(table.rowStart);
        table.hasCell = false;
    }
    _writer.RequireBreaks(1);
}

void PageLayout::StartRow()
{
    if (_tableDepth == 0)
        return;
    EndRow();
    _tables[_tableDepth - 1].rowStart = _writer.Length();
}

void PageLayout::StartCell()
{
    if (_tableDepth == 0)
        return;
    Table& table = _tables[_tableDepth - 1];
    EndCell();
    if (table.hasCell)
        _writer.Tab(table.rowStart);
    else
    {
        table.rowStart = _writer.Length();
        _writer.KeepLine();
    }
    table.hasCell = true;
}

void PageLayout::StartLink(std::wstring_view attributes)
{
    EndLink();
    if (!_showsLinks)
        return;
    _target = FindHtmlAttribute(attributes, L"href");
    _linkStart = _writer.Length();
}

// Writes the target of the link, unless the link has no text, the text equals the target, or the target is a script or
// a place in the same page.
void PageLayout::EndLink()
{
    if (!_target)
        return;
    String target = UnescapeHtml(TrimHtmlSpace(*_target), true);
    _target.reset();
    for (const wchar_t removed : {L'\t', L'\n', L'\r'})
        target.Replace(removed, L'\0');
    const std::wstring_view text = TrimHtmlSpace(_writer.Written().substr(_linkStart));
    const std::wstring_view view = target.View();
    if (text.empty() || view.empty() || view[0] == L'#' || EqualsHtmlName(view.substr(0, 11), L"javascript:") ||
        EqualsHtmlName(text, view))
        return;
    _writer.AppendToWord(L" [");
    _writer.AppendToWord(view);
    _writer.AppendToWord(L"]");
}

// Writes an attribute as the replacement text of an element without content.
void PageLayout::WriteAttribute(std::wstring_view attributes, std::wstring_view name)
{
    const auto value = FindHtmlAttribute(attributes, name);
    if (!value)
        return;
    _writer.Space();
    _writer.AttributeText(*value);
    _writer.Space();
}

void PageLayout::WriteInput(std::wstring_view attributes)
{
    const std::wstring_view type = FindHtmlAttribute(attributes, L"type").value_or(L"text");
    for (const std::wstring_view shown :
        {L"text", L"submit", L"button", L"reset", L"search", L"url", L"email", L"tel", L"number"})
        if (EqualsHtmlName(type, shown))
            return WriteAttribute(attributes, L"value");
    if (EqualsHtmlName(type, L"image"))
        WriteAttribute(attributes, L"alt");
}

} // namespace qx
