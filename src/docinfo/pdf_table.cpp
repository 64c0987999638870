#include "docinfo/pdf_table.h"

#include "core/errors/exception.h"
#include "docinfo/text_scan.h"

#include <algorithm>

namespace qx
{
namespace
{

// Reads an entry "0000000016 00000 n": offset, generation, type letter.
bool ReadEntry(PDFCursor& cursor, std::int64_t& offset)
{
    PDFCursor entry = cursor;
    std::int64_t generation = 0;
    if (!entry.ReadNumber(offset) || !entry.ReadNumber(generation))
        return false;
    entry.SkipSpace();
    // A digit would begin the header of another subsection.
    if (!IsLetterASCII(static_cast<unsigned char>(entry.Take())))
        return false;
    cursor = entry;
    return true;
}

void SkipSpaceInTable(PDFCursor& cursor)
{
    cursor.SkipSpace();
    if (cursor.IsAtEnd())
        throw new clsException(L"premature end of xref");
}

// Parses a table and its trailer. Only the first subsection of the table is read.
void ParseTable(PDFCursor& cursor, PDFOffsets& offsets, PDFDictionary& trailer)
{
    cursor.Skip("xref");
    SkipSpaceInTable(cursor);
    std::int64_t first = 0, count = 0, offset = 0;
    cursor.ReadNumber(first);
    cursor.ReadNumber(count);
    for (std::int64_t i = 0; ReadEntry(cursor, offset); ++i)
    {
        if (i >= count)
            throw new clsException(L"bad xref count");
        offsets.Add(
            static_cast<std::uint32_t>(first) + static_cast<std::uint32_t>(i), static_cast<std::uint64_t>(offset));
        SkipSpaceInTable(cursor);
    }
    cursor.ParseDictionary("trailer", trailer);
}

// Throws for a cross-reference stream, which is recognised but can't be read.
[[noreturn]] void RefuseStream(PDFCursor& cursor, PDFDictionary& trailer)
{
    std::int64_t number = 0;
    cursor.ReadNumber(number);
    cursor.ReadNumber(number);
    cursor.ParseDictionary("obj", trailer);
    const clsVariant* const type = trailer.Find(L"Type");
    const clsVariant* const filter = trailer.Find(L"Filter");
    const clsVariant* const length = trailer.Find(L"Length");
    if (type == nullptr || filter == nullptr || length == nullptr || ToString(*type) != L"XRef")
        throw new clsException(L"no xref");
    if (!cursor.StandsAt("stream"))
        throw new clsException(L"no xref stream");
    cursor.Skip("stream");
    if (cursor.StandsAt("\r"))
        cursor.Skip("\r");
    if (!cursor.StandsAt("\n"))
        throw new clsException(L"no xref");
    cursor.Skip("\n");
    if (ToDouble(*length) < 0 || !cursor.SkipBytes(NumberOf(length)))
        throw new clsException(L"no xref");
    cursor.SkipSpace();
    if (!cursor.StandsAt("endstream"))
        throw new clsException(L"no xref");
    throw new clsException(L"no xref compressed(%1)", ToString(*filter).Text());
}

} // namespace

void PDFOffsets::Add(std::uint32_t number, std::uint64_t offset)
{
    if (_offsets.size() < kMost)
        _offsets.emplace_back(number, offset);
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> PDFOffsets::Find(std::uint32_t number, std::uint64_t end)
{
    const auto byNumber = [](const auto& a, const auto& b)
    {
        return a.first < b.first;
    };
    std::stable_sort(_offsets.begin(), _offsets.end(), byNumber);
    _offsets.erase(
        std::unique(_offsets.begin(), _offsets.end(), [](const auto& a, const auto& b) { return a.first == b.first; }),
        _offsets.end());
    const std::optional<std::uint64_t> offset = OffsetOf(number);
    if (!offset || !OffsetOf(number + 1))
        return std::nullopt;
    std::optional<std::uint64_t> next;
    for (const auto& entry : _offsets)
        if (entry.second > *offset && (!next || entry.second < *next))
            next = entry.second;
    return std::pair(*offset, next.value_or(end));
}

std::optional<std::uint64_t> PDFOffsets::OffsetOf(std::uint32_t number) const
{
    const auto found = std::lower_bound(_offsets.begin(), _offsets.end(), number,
        [](const auto& entry, std::uint32_t wanted) { return entry.first < wanted; });
    return found != _offsets.end() && found->first == number ? std::optional(found->second) : std::nullopt;
}

void ParseXRef(PDFCursor& cursor, PDFOffsets& offsets, PDFDictionary& trailer)
{
    if (cursor.StandsAt("xref"))
        ParseTable(cursor, offsets, trailer);
    else
        RefuseStream(cursor, trailer);
}

} // namespace qx
