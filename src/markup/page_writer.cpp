#include "markup/page_writer.h"

#include "markup/html_characters.h"
#include "markup/html_references.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qx
{
namespace
{

// True for the characters that end a run of ordinary characters in folded text.
constexpr auto kEndsRun = []
{
    std::array<bool, 64> special{};
    for (std::size_t c = 0; c < special.size(); ++c)
        special[c] = IsHtmlSpace(static_cast<wchar_t>(c)) || c == L'&';
    return special;
}();

constexpr bool EndsRun(wchar_t c)
{
    return c < kEndsRun.size() && kEndsRun[c];
}

} // namespace

PageWriter::PageWriter(std::size_t expected) : _capacity(expected), _text(_result.GetBuffer(expected + 1)) {}

String PageWriter::Take()
{
    _result.ReleaseBuffer(_length);
    return std::move(_result);
}

void PageWriter::FoldedText(std::wstring_view html, bool inAttribute)
{
    const wchar_t* in = html.data();
    const wchar_t* const end = in + html.size();
    while (in != end)
    {
        if (IsHtmlSpace(*in))
        {
            _space = true;
            ++in;
            continue;
        }
        if (*in == L'&')
        {
            const HtmlReference reference = ReadHtmlReference({in, static_cast<std::size_t>(end - in)}, inAttribute);
            if (reference.length != 0)
            {
                if (IsHtmlSpace(reference.units[0]))
                    _space = true;
                else
                    Word(reference.Units());
                in += reference.length;
                continue;
            }
        }
        in = CopyWords(in, end);
    }
}

// Copies the character at `in` and all that follows up to the next reference or white space other than single blanks.
// Returns the end of the copied text.
const wchar_t* PageWriter::CopyWords(const wchar_t* in, const wchar_t* end)
{
    BeginText(true);
    MakeRoom(static_cast<std::size_t>(end - in));
    wchar_t* out = _text + _length;
    do
        do
            *out++ = *in++;
        while (in != end && !EndsRun(*in));
    while (end - in >= 2 && *in == L' ' && !EndsRun(in[1]));
    _length = static_cast<std::size_t>(out - _text);
    return in;
}

void PageWriter::Verbatim(std::wstring_view html, bool resolveReferences)
{
    for (std::size_t at = 0; at < html.size();)
    {
        const std::wstring_view rest = html.substr(at);
        const auto endsLine = [=](wchar_t c)
        {
            return c == L'\n' || c == L'\r' || (c == L'&' && resolveReferences);
        };
        const auto plain = static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), endsLine) - rest.begin());
        if (plain != 0)
        {
            BeginText(false);
            Write(rest.substr(0, plain));
        }
        else if (rest[0] != L'&')
            BreakLine();
        else
        {
            HtmlReference reference = ReadHtmlReference(rest, false);
            if (reference.length == 0)
                reference = {1, {L'&'}, 1};
            if (reference.units[0] == L'\n')
                BreakLine();
            else
            {
                BeginText(false);
                Write(reference.Units());
            }
            at += reference.length;
            continue;
        }
        at += std::max<std::size_t>(plain, rest.starts_with(L"\r\n") ? 2 : 1);
    }
}

void PageWriter::BreakLine()
{
    _space = false;
    if (_keepsLine)
        return;
    ++_breaks;
    _lineBegins = _isDue = true;
}

void PageWriter::RequireBreaks(std::size_t count)
{
    _space = false;
    if (_keepsLine)
        return;
    _breaks = std::max(_breaks, count);
    _lineBegins = _isDue = true;
}

void PageWriter::KeepLine()
{
    _keepsLine = _isDue = true;
}

void PageWriter::Mark(std::size_t column, const ListMarker& marker)
{
    _markerColumn = column;
    _marker = marker;
    KeepLine();
}

void PageWriter::EndMarkedText()
{
    if (_marker.IsEmpty())
        return;
    WriteDue(true);
    _space = false;
}

void PageWriter::EndCell(std::size_t rowStart)
{
    EndMarkedText();
    _keepsLine = _space = false;
    if (_length == rowStart)
        return;
    _breaks = 0;
    _lineBegins = false;
}

void PageWriter::Tab(std::size_t rowStart)
{
    EndCell(rowStart);
    ++_tabs;
    KeepLine();
}

void PageWriter::EndRow(std::size_t rowStart)
{
    EndCell(rowStart);
    _tabs = 0;
}

void PageWriter::AppendToWord(std::wstring_view text)
{
    Write(text);
}

void PageWriter::Word(std::wstring_view text)
{
    BeginText(true);
    Write(text);
}

void PageWriter::BeginText(bool indented)
{
    if (_isDue)
        WriteDue(indented);
    if (std::exchange(_space, false))
        Write(1, L' ');
}

void PageWriter::WriteDue(bool indented)
{
    if (std::exchange(_lineBegins, false))
    {
        Write(_length != 0 ? _breaks : 0, L'\n');
        if (!_marker.IsEmpty())
            Write(_markerColumn, L' ');
        else if (indented)
            Write(_indentation, L' ');
        _space = false;
    }
    if (_tabs != 0)
    {
        Write(_tabs, L'\t');
        _space = false;
    }
    if (!_marker.IsEmpty())
    {
        Write(_marker.Text());
        _marker = {};
        _space = true;
    }
    _breaks = _tabs = 0;
    _keepsLine = _isDue = false;
}

void PageWriter::Write(std::wstring_view text)
{
    MakeRoom(text.size());
    // A plain loop, because for most words a call of memcpy would take longer.
    wchar_t* out = _text + _length;
    for (const wchar_t c : text)
        *out++ = c;
    _length += text.size();
}

void PageWriter::Write(std::size_t count, wchar_t c)
{
    MakeRoom(count);
    std::fill_n(_text + _length, count, c);
    _length += count;
}

void PageWriter::MakeRoom(std::size_t count)
{
    if (_capacity - _length < count)
        Grow(count);
}

void PageWriter::Grow(std::size_t count)
{
    const std::size_t capacity = std::max(_capacity + _capacity / 2, _length + count) + 64;
    _result.ReleaseBuffer(_length);
    _text = _result.GetBuffer(capacity + 1);
    _capacity = capacity;
}

} // namespace qx
