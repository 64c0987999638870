// Builds the plain text of a page. White space, line breaks, indentation and tabs are written only once text follows.
#pragma once

#include "core/text/string.h"
#include "markup/list_marker.h"

#include <cstddef>
#include <string_view>

namespace qx
{

class PageWriter
{
public:
    // `expected` is an estimate of the length of the result.
    explicit PageWriter(std::size_t expected);

    // Appends HTML text: folds white space and resolves references.
    void Text(std::wstring_view html) { FoldedText(html, false); }
    void AttributeText(std::wstring_view html) { FoldedText(html, true); }

    // Appends text with its white space and line breaks.
    void Verbatim(std::wstring_view html, bool resolveReferences);

    // Separates the next text from the previous one by a blank.
    void Space() { _space = true; }

    // Ends the line. Further calls add blank lines.
    void BreakLine();

    // Makes the next text begin a line, after at least `count` line ends: 2 for a blank line.
    void RequireBreaks(std::size_t count);

    // Sets the indentation of the lines that follow, in columns.
    void Indent(std::size_t columns) { _indentation = columns; }

    // Puts a marker, which starts at `column`, before the next text, and keeps that text in the same line.
    void Mark(std::size_t column, const ListMarker& marker);

    // Writes the marker if no text followed it.
    void EndMarkedText();

    // Ignores line breaks until text follows: a block at the start of a cell begins no line.
    void KeepLine();

    // Begins another cell. `rowStart` is the length of the text before the row.
    void Tab(std::size_t rowStart);

    // Ends a cell. Drops pending line breaks if the row has text.
    void EndCell(std::size_t rowStart);

    // Ends the last cell of a row.
    void EndRow(std::size_t rowStart);

    // Appends text directly to the last word, before anything that is pending.
    void AppendToWord(std::wstring_view text);

    std::wstring_view Written() const { return {_text, _length}; }
    std::size_t Length() const { return _length; }

    // Moves the result out; the writer cannot be used afterwards.
    String Take();

private:
    void FoldedText(std::wstring_view html, bool inAttribute);
    const wchar_t* CopyWords(const wchar_t* in, const wchar_t* end);
    void Word(std::wstring_view text);
    void BeginText(bool indented);
    void WriteDue(bool indented);
    void Write(std::wstring_view text);
    void Write(std::size_t count, wchar_t c);
    void MakeRoom(std::size_t count);
    void Grow(std::size_t count);

    String _result;
    std::size_t _capacity;
    wchar_t* _text; // the buffer of the result
    std::size_t _length = 0;

    // Pending output, written before the next text.
    std::size_t _breaks = 0;
    std::size_t _tabs = 0;
    bool _lineBegins = true;
    bool _keepsLine = false;
    bool _isDue = true; // true if any of these is pending

    bool _space = false;

    std::size_t _indentation = 0;
    std::size_t _markerColumn = 0;
    ListMarker _marker;
};

} // namespace qx
