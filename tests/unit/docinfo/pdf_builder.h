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

// Returns a file of successive revisions. Each has a table of its own, and a trailer that refers to the previous table.
inline std::string PdfOf(const std::vector<PdfRevision>& revisions)
{
    std::string bytes = "%PDF-1.4\n";
    std::size_t before = 0;
    for (const PdfRevision& revision : revisions)
    {
        std::string entries;
        for (const std::string& object : {"1 0 obj\n" + revision.info, std::string("2 0 obj\n<<>>")})
        {
            const std::string offset = std::to_string(bytes.size());
            entries += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
            bytes += object + "\nendobj\n";
        }
        const std::size_t table = bytes.size();
        bytes += revision.table.empty() ? "xref\n1 2\n" + entries : revision.table;
        bytes += "trailer\n<</Info 1 0 R " + revision.trailer;
        if (before != 0)
            bytes += "/Prev " + std::to_string(before);
        bytes += ">>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
        before = table;
    }
    return bytes;
}

} // namespace qxtest
