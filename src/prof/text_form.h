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

// --- Characters that stand for others, so that every leaf fits one line ---

// In a leaf's name '=', '[' and ']', which the syntax needs.
constexpr wchar_t kEncodedEquals = 0x2338;
constexpr wchar_t kEncodedOpen = 0x301A;
constexpr wchar_t kEncodedClose = 0x301B;
// In names and values the characters below the blank: the pictures of the control characters.
constexpr wchar_t kControlPictures = 0x2400;

// In place. A name keeps its control pictures; a list's name isn't decoded at all.
void DecodeName(wchar_t* name, std::size_t length);
void DecodeValue(wchar_t* value, std::size_t length);

// --- Reading ---

// What the parsers of all forms share while one source is read.
struct scParseState
{
    clsProfJob& job;
    clsProfLineReader& reader;
    ProfForm form = ProfForm::Text; // the XML rules may change it to that of XFDF
    std::uint32_t lineCounter = 0;
    bool inComment = false;
};

constexpr int kBeforeRoot = -1; // level until the root's marker has been seen

// Reads lines into the list, from the level on, until that level ends or the text does. A list joins the one around it
// when it ends; when a clsLoadException (or any other) leaves this function, those that haven't ended are gone.
void ParseLevel(scParseState& state, int level, clsItemList& list);

// Plain INI files: the keys of the first section become leaves of the list, and each further section a list inside the
// one before it, since nothing ends a section.
void ParseIni(scParseState& state, clsItemList& list);

// --- Writing ---

// The block of a list: its name in brackets, then its items between braces.
void WriteTextForm(clsProfOutput& output, const clsItemList& list, std::uint32_t level);

} // namespace qx
