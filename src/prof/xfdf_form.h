// XFDF (ISO 19444-1), the interchange form for the field values of a PDF form. Nested lists are written as nested
// fields. Reading yields only leaves; the name of each leaf consists of the names of all open fields, joined by dots.
// Like the XML form, it is read line by line.
//
// The output is XFDF that other software reads correctly: UTF-8, as the head declares, with markup characters masked.
// Tabs and line breaks are written as numeric references, because XML would normalise them. Characters that XML can't
// represent are replaced: other control characters by control pictures, as in the text form; unpaired surrogates,
// U+FFFE and U+FFFF by U+FFFD.
#pragma once

#include "prof/item.h"
#include "prof/text_form.h"

#include <cstdint>

namespace qx
{

class clsProfOutput;

// A source that begins with this line is in XFDF form.
constexpr wchar_t kXfdfFirstLine[] = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// Reads lines into the list, like ParseLevel. Below level 0, the <xfdf> tag must come first.
void ParseXfdfLines(scParseState& state, int level, clsItemList& list);

// The name of each leaf contains the names of all enclosing fields, so the names of a source with n characters could
// add up to n * n characters. Returns the limit on the total length of the names for a source of this size.
constexpr std::uint64_t MostXfdfNameCharacters(std::uint64_t sourceBytes)
{
    return (std::uint64_t{1} << 23) + 16 * sourceBytes;
}

// Writes a complete file: the head, the entries of the root at level 1, and the end. Returns false if the names would
// exceed the limit for reading.
bool WriteXfdfFile(clsProfOutput& output, const clsItemList& root);

// Writes only the entries, without a head.
void WriteXfdfObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level);

} // namespace qx
