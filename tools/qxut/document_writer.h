// Prints documents as a table, as JSON lines or as CSV.
#pragma once

#include "document.h"

#include <cstddef>
#include <vector>

namespace qxut
{

enum class DocFormat
{
    Table, // columns on a terminal, otherwise separated by tabs
    Json,
    Csv
};

class DocumentWriter
{
public:
    // If `fields` is empty, the usual fields of the format are written.
    DocumentWriter(DocFormat format, std::vector<DocField> fields, bool explains);

    // Writes a document. A document that can't be read is also named on standard error, except for JSON.
    void Write(const Document& document);

    std::size_t Unreadable() const { return _unreadable; }

private:
    void WriteHead() const;
    void WriteJson(const Document& document) const;
    void WriteRow(const std::vector<std::string>& cells) const;

    DocFormat _format;
    std::vector<DocField> _fields;
    bool _isAligned;
    std::size_t _unreadable = 0;
};

} // namespace qxut
