// The text form of a profile: bracketed lists and name=value lines.
#pragma once

#include "prof/item.h"
#include "prof/job.h"
#include "prof/line_reader.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

class clsProfOutput;

// --- Replacement characters, which let every leaf fit on one line ---

// Replace '=', '[' and ']' in the name of a leaf, because they are part of the syntax.
constexpr wchar_t kEncodedEquals = 0x2338;
constexpr wchar_t kEncodedOpen = 0x301A;
constexpr wchar_t kEncodedClose = 0x301B;
// Control pictures: replace control characters in names and values.
constexpr wchar_t kControlPictures = 0x2400;

// Decode in place. DecodeName doesn't decode control pictures. Names of lists aren't decoded at all.
void DecodeName(wchar_t* name, std::size_t length);
void DecodeValue(wchar_t* value, std::size_t length);

// --- Reading ---

// The state shared by the parsers of all forms while they read one source.
struct scParseState
{
    clsProfJob& job;
    clsProfLineReader& reader;
    ProfForm form = ProfForm::Text; // the XML parser may change it to XFDF
    std::uint32_t lineCounter = 0;
    bool inComment = false;
    std::uint32_t source = 0; // ProfSource bits found so far
};

inline bool IsBlank(std::wstring_view text)
{
    return text.find_first_not_of(L" \t") == std::wstring_view::npos;
}

// Records what a save would lose of this text, which isn't part of any entry.
void NoteIgnored(scParseState& state, std::wstring_view text);
// Reads and ignores the lines after the end of the profile.
void IgnoreRest(scParseState& state);

constexpr int kBeforeRoot = -1; // level until the marker of the root has been read

// Reads lines into the list, starting at `level`, until that level or the source ends. A list is inserted into its
// parent when it ends. If this function throws (a clsLoadException or another exception), unfinished lists are
// released.
void ParseLevel(scParseState& state, int level, clsItemList& list);

// Reads a plain INI file. The keys of the first section become leaves of the list. Each further section becomes a list
// inside the previous one, because nothing marks the end of a section.
void ParseIni(scParseState& state, clsItemList& list);

// --- Writing ---

// Writes a list: its name in brackets, then its items in braces.
void WriteTextForm(clsProfOutput& output, const clsItemList& list, std::uint32_t level);

} // namespace qx
