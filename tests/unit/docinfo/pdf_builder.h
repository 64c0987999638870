// Makes PDF files.
#pragma once

#include <string>
#include <vector>

namespace qxtest
{

struct PdfRevision
{
    std::string info;         // object 1; object 2 follows, because a last object isn't read
    std::string trailer = ""; // further entries
    std::string table = "";   // instead of the true table
};

// Revisions follow each other; each has a table and a trailer of its own that refers to the one before.
inline std::string PdfOf(const std::vector<PdfRevision>& revisions)
{
    std::string bytes = "%PDF-1.4\n";
    std::size_t before = 0;
    const auto entry = [](std::size_t offset)
    {
        const std::string digits = std::to_string(offset);
        return std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
    };
    for (const PdfRevision& revision : revisions)
    {
        const std::size_t first = bytes.size();
        bytes += "1 0 obj\n" + revision.info + "\nendobj\n";
        const std::size_t second = bytes.size();
        bytes += "2 0 obj\n<<>>\nendobj\n";
        const std::size_t table = bytes.size();
        bytes += revision.table.empty() ? "xref\n1 2\n" + entry(first) + entry(second) : revision.table;
        bytes += "trailer\n<</Info 1 0 R " + revision.trailer +
                 (before != 0 ? "/Prev " + std::to_string(before) : std::string()) + ">>\n";
        bytes += "startxref\n" + std::to_string(table) + "\n%%EOF\n";
        before = table;
    }
    return bytes;
}

} // namespace qxtest
