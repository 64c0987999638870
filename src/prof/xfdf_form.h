// The form of the values of a PDF form: XFDF (ISO 19444-1). Nested lists are nested fields, and what is read of them
// are leaves alone, named by the names of all open fields, joined by dots. Like the XML form it is read line by line.
//
// What is written is XFDF that other software reads as it is meant: UTF-8, as the head says, with the characters masked
// that XML gives a meaning, and a number for tabs and line breaks, which XML would change otherwise. Characters that
// XML can't hold are replaced: other control characters by their pictures, which a text profile writes for them too;
// halves of surrogate pairs and U+FFFE and U+FFFF by U+FFFD.
#pragma once

#include "prof/item.h"
#include "prof/text_form.h"

#include <cstdint>

namespace qx
{

class clsProfOutput;

// A source that begins with this line is in this form.
constexpr wchar_t kXfdfFirstLine[] = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// Reads lines into the list, as ParseLevel does. Below level 0 it waits for the <xfdf> tag.
void ParseXfdfLines(scParseState& state, int level, clsItemList& list);

// Each leaf bears the names of all fields around it, so that the names of a source of n characters could have a length
// of n * n. This is how many characters they may have in a source of so many bytes.
constexpr std::uint64_t MostXfdfNameCharacters(std::uint64_t sourceBytes)
{
    return (std::uint64_t{1} << 23) + 16 * sourceBytes;
}

// A whole file: the head, the entries of the root at level 1, and the end. False if its names would be too long to be
// read again.
bool WriteXfdfFile(clsProfOutput& output, const clsItemList& root);

// The entries alone, without a head.
void WriteXfdfObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level);

} // namespace qx
