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
        return ListNumbering::LowerLetters;
    if (type == L"A")
        return ListNumbering::UpperLetters;
    if (type == L"i")
        return ListNumbering::LowerRoman;
    if (type == L"I")
        return ListNumbering::UpperRoman;
    return ListNumbering::Decimal;
}

} // namespace

void PageLayout::Add(const HtmlToken& token)
{
    if (_templates != 0)
    {
        if (token.element == HtmlElement::TemplateContent)
            token.kind == HtmlToken::Kind::StartTag ? ++_templates : --_templates;
        return;
    }
    switch (token.kind)
    {
    case HtmlToken::Kind::Text:
        return AddText(token);
    case HtmlToken::Kind::StartTag:
        _skipsLineFeed = false;
        return StartTag(token.element, token.text);
    case HtmlToken::Kind::EndTag:
        _skipsLineFeed = false;
        return EndTag(token.element);
    case HtmlToken::Kind::End:
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
    case HtmlElement::Script:
    case HtmlElement::RawHidden:
        return;
    case HtmlElement::Title: // only the title of the page is shown, not the titles of drawings
        if (_writer.Length() == 0)
            _writer.Text(text);
        return _writer.RequireBreaks(2);
    case HtmlElement::TextArea:
    case HtmlElement::RawPreformatted:
    case HtmlElement::PlainText:
        _writer.RequireBreaks(1);
        if (token.element == HtmlElement::TextArea && (text.starts_with(L'\n') || text.starts_with(L"\r\n")))
            text.remove_prefix(text[0] == L'\r' ? 2 : 1);
        _writer.Verbatim(text, token.element == HtmlElement::TextArea);
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
    case HtmlElement::Block:
        return _writer.RequireBreaks(1);
    case HtmlElement::Paragraph:
    case HtmlElement::Preformatted:
    case HtmlElement::Rule:
    case HtmlElement::Quote:
        return _writer.RequireBreaks(2);
    case HtmlElement::LineBreak:
        return _writer.BreakLine();
    case HtmlElement::Quotation:
        return _writer.Text(L"\"");
    case HtmlElement::Option:
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
    case HtmlElement::Preformatted:
        ++_preformatted;
        _skipsLineFeed = true;
        return;
    case HtmlElement::Quote:
    case HtmlElement::UnorderedList:
    case HtmlElement::OrderedList:
    case HtmlElement::DefinitionList:
        return StartList(element, attributes);
    case HtmlElement::Item:
        return StartItem(attributes);
    case HtmlElement::Term:
        return StartDefinition(false);
    case HtmlElement::Definition:
        return StartDefinition(true);
    case HtmlElement::Table:
        return StartTable();
    case HtmlElement::Row:
        return StartRow();
    case HtmlElement::Cell:
        return StartCell();
    case HtmlElement::Anchor:
        return StartLink(attributes);
    case HtmlElement::Image:
        return WriteAttribute(attributes, L"alt");
    case HtmlElement::Input:
        return WriteInput(attributes);
    case HtmlElement::TemplateContent:
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
    case HtmlElement::Preformatted:
        _preformatted -= _preformatted != 0;
        return;
    case HtmlElement::Quote:
    case HtmlElement::UnorderedList:
    case HtmlElement::OrderedList:
    case HtmlElement::DefinitionList:
        return EndList(element);
    case HtmlElement::Item:
        _writer.EndMarkedText();
        return _writer.RequireBreaks(1);
    case HtmlElement::Table:
        return EndTable();
    case HtmlElement::Row:
        return EndRow();
    case HtmlElement::Anchor:
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
    list = {element, ListNumbering::None, 1, 0};
    if (element == HtmlElement::OrderedList)
    {
        list.numbering = ReadNumbering(attributes);
        list.next = ReadInteger(attributes, L"start").value_or(1);
        list.indentation = kNumberIndentation;
    }
    else if (element == HtmlElement::UnorderedList)
        list.indentation = kListIndentation;
    else if (element == HtmlElement::Quote)
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
    List unlisted{HtmlElement::UnorderedList, ListNumbering::None, 1, 0};
    const bool listed = _listDepth != 0 && (_lists[_listDepth - 1].element == HtmlElement::OrderedList ||
                                               _lists[_listDepth - 1].element == HtmlElement::UnorderedList);
    List& list = listed ? _lists[_listDepth - 1] : unlisted;
    std::int32_t number = list.next;
    if (list.numbering != ListNumbering::None)
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
    if (_listDepth == 0 || _lists[_listDepth - 1].element != HtmlElement::DefinitionList)
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
