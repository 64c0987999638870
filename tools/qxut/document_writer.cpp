#include "document_writer.h"

#include "terminal.h"
#include "text.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <utility>

namespace qxut
{

namespace
{

// Widths of the columns on a terminal.
constexpr std::size_t kFileWidth = 32, kTextWidth = 28, kDateWidth = 19;

std::size_t WidthOf(DocField field)
{
    switch (field)
    {
    case DocField::File:
    case DocField::Path:
        return kFileWidth;
    case DocField::Created:
    case DocField::Saved:
        return kDateWidth;
    default:
        return kTextWidth;
    }
}

std::string_view NameOf(DocField field)
{
    return kDocFieldNames[static_cast<std::size_t>(field)];
}

bool BeginsCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

// Truncates a text to a number of characters, or fills it up with blanks.
std::string Fitted(std::string text, std::size_t width)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (BeginsCharacter(text[i]) && ++characters > width)
        {
            text.resize(i);
            return text;
        }
    return text + std::string(width - characters, ' ');
}

// Quotes a text that contains a quote, a comma or a line end (RFC 4180).
std::string CsvCell(const std::string& text)
{
    if (text.find_first_of("\",\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

std::vector<DocField> UsualFields(DocFormat format, bool explains)
{
    using enum DocField;
    std::vector<DocField> fields = {File, Title, Author, Saved};
    if (format != DocFormat::Table)
        fields = {File, Title, Subject, Author, LastAuthor, Keywords, Comments, Created, Saved};
    if (explains)
        fields.insert(fields.end(), {Reader, Remark});
    return fields;
}

} // namespace

DocumentWriter::DocumentWriter(DocFormat format, std::vector<DocField> fields, bool explains)
    : _format(format),
      _fields(fields.empty() ? UsualFields(format, explains) : std::move(fields)),
      _isAligned(OutputGoesToTerminal())
{
    WriteHead();
}

void DocumentWriter::WriteHead() const
{
    if (_format == DocFormat::Json || (_format == DocFormat::Table && !_isAligned))
        return;
    std::vector<std::string> names;
    for (const DocField field : _fields)
        names.emplace_back(NameOf(field));
    WriteRow(names);
}

void DocumentWriter::Write(const Document& document)
{
    if (!document.isReadable)
    {
        ++_unreadable;
        if (_format != DocFormat::Json)
            std::cerr << "qxut: cannot read '" << Shown(document[DocField::File]) << '\''
                      << (document[DocField::Remark].empty() ? "" : ": " + Shown(document[DocField::Remark])) << '\n';
    }
    if (_format == DocFormat::Json)
        WriteJson(document);
    else if (document.isReadable || !_isAligned) // programs expect a line for each file
    {
        std::vector<std::string> cells;
        for (const DocField field : _fields)
            cells.push_back(document[field]);
        WriteRow(cells);
    }
}

// Fields that the document doesn't have are left out.
void DocumentWriter::WriteJson(const Document& document) const
{
    nlohmann::ordered_json json;
    for (const DocField field : _fields)
        if (!document[field].empty())
            json[std::string(NameOf(field))] = document[field];
    if (!document.isReadable)
        json["error"] = "cannot be read";
    std::cout << JsonText(json) << '\n';
}

void DocumentWriter::WriteRow(const std::vector<std::string>& cells) const
{
    for (std::size_t i = 0; i < cells.size(); ++i)
    {
        const bool isLast = i + 1 == cells.size();
        if (_format == DocFormat::Csv)
            std::cout << CsvCell(Shown(cells[i])) << (isLast ? "\r\n" : ",");
        else if (_isAligned)
            std::cout << (isLast ? Shown(cells[i]) : Fitted(Shown(cells[i]), WidthOf(_fields[i])))
                      << (isLast ? "\n" : "  ");
        else
            std::cout << Shown(cells[i]) << (isLast ? "\n" : "\t");
    }
}

} // namespace qxut
