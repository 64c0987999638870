// The plain text of a page as it grows: white space, line breaks, indentation and tabs take effect once text follows.
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
    // `expected` is the likely length of the result, which may grow beyond it.
    explicit PageWriter(std::size_t expected);

    // Text as it is written in HTML: white space is folded, references are resolved.
    void Text(std::wstring_view html) { FoldedText(html, false); }
    void AttributeText(std::wstring_view html) { FoldedText(html, true); }

    // Text whose white space and lines stay as they are.
    void Verbatim(std::wstring_view html, bool resolveReferences);

    // Separates what was written from the text that follows by a blank.
    void Space() { _space = true; }

    // Ends the line; each call is one line end.
    void BreakLine();

    // What follows begins a line: behind 1 line end, or 2 for a blank line, but no more than are due already.
    void RequireBreaks(std::size_t count);

    // The columns by which lines are indented from now on.
    void Indent(std::size_t columns) { _indentation = columns; }

    // The text that follows begins with a marker, which starts at this column, and stays in its line.
    void Mark(std::size_t column, const ListMarker& marker);

    // Writes a marker to which no text belongs.
    void EndMarkedText();

    // What follows stays in this line although blocks begin: the start of a table's cell.
    void KeepLine();

    // Begins a further cell of a row, whose text begins at `rowStart`.
    void Tab(std::size_t rowStart);

    // Ends a cell: line breaks that are due are dropped if the row has text.
    void EndCell(std::size_t rowStart);

    // Ends the last cell of a row.
    void EndRow(std::size_t rowStart);

    // Writes to the end of the last word, whatever is due for the next one.
    void AppendToWord(std::wstring_view text);

    std::wstring_view Written() const { return {_text, _length}; }
    std::size_t Length() const { return _length; }

    // Ends the writing.
    String Take();

private:
    void FoldedText(std::wstring_view html, bool inAttribute);
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

    // What is due before the next text.
    std::size_t _breaks = 0;
    std::size_t _tabs = 0;
    bool _lineBegins = true;
    bool _keepsLine = false;
    bool _isDue = true; // any of these

    bool _space = false;

    std::size_t _indentation = 0;
    std::size_t _markerColumn = 0;
    ListMarker _marker;
};

} // namespace qx
