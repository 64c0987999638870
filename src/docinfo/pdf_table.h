// Reads the cross-reference tables of a PDF file (ISO 32000-1, 7.5.4), which contain the offsets of its objects.
#pragma once

#include "docinfo/pdf_values.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace qx
{

// The offsets of objects by their numbers. Tables are added from the newest to the oldest; if a number has several
// offsets, the first one added is used.
class PDFOffsets
{
public:
    static constexpr std::size_t kMost = 1'000'000; // further ones are ignored

    void Add(std::uint32_t number, std::uint64_t offset);

    // Returns the place of an object: its offset, and the next higher offset of any object, or `end` if there is none.
    // Returns nothing if the object or the object with the next number isn't in the tables.
    std::optional<std::pair<std::uint64_t, std::uint64_t>> Find(std::uint32_t number, std::uint64_t end);

private:
    std::optional<std::uint64_t> OffsetOf(std::uint32_t number) const;

    std::vector<std::pair<std::uint32_t, std::uint64_t>> _offsets;
};

// Parses the table that begins here, and its trailer. Throws clsException for a fault in the syntax, and for a
// cross-reference stream, which isn't read.
void ParseXRef(PDFCursor& cursor, PDFOffsets& offsets, PDFDictionary& trailer);

} // namespace qx
