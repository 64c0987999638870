#include "prof/text_form.h"

#include "prof/open_lists.h"
#include "prof/text_scan.h"
#include "prof/xfdf_form.h"
#include "prof/xml_form.h"

namespace qx
{

namespace
{

void DecodePart(wchar_t* text, std::size_t length, void (*decode)(wchar_t*, std::size_t), bool mayBeEncoded)
{
    if (mayBeEncoded)
        decode(text, length);
}

void AppendLeaf(scParseState& state, clsItemList& list, const scProfLine& line)
{
    const std::size_t equals = line.View().find(L'=');
    const bool hasValue = equals != std::wstring_view::npos;
    const std::size_t nameLength = hasValue ? equals : line.length;
    wchar_t* const value = line.text + (hasValue ? equals + 1 : line.length);
    const std::size_t valueLength = line.length - static_cast<std::size_t>(value - line.text);
    DecodePart(line.text, nameLength, DecodeName, line.mayBeEncoded);
    DecodePart(value, valueLength, DecodeValue, line.mayBeEncoded);

    const std::wstring_view name(line.text, nameLength);
    clsProfJob& job = state.job;
    clsItem& leaf =
        state.reader.IsWide() ? job.NewLeafInImage(name, value, valueLength) : job.NewLeaf(name, {value, valueLength});
    list.AppendItem(leaf);
    // A save loses control characters of names: they are read back as their pictures.
    if (!leaf.Name().isPlain && HasControlCharacter(name))
        state.source |= kSourceIgnored;
}

// Returns false if the source has no root marker. Such a source is ignored.
bool FindRoot(scParseState& state)
{
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        ++state.lineCounter;
        if (line.View() == L"[/]")
            return true;
        NoteIgnored(state, line.View());
    }
    state.source |= kSourceForeign;
    return false;
}

void ParseTextLines(scParseState& state, clsItemList& list)
{
    clsOpenLists open(state.job, list);
    std::size_t openBraces = 0;
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        ++state.lineCounter;
        switch (line.text[0])
        {
        case 0: // blank line
            break;
        case L'#':
        case L';':
            state.source |= kSourceComments;
            break;
        case L'{':
            ++openBraces;
            NoteIgnored(state, line.View().substr(1));
            break;
        case L'[':
            if (!line.View().ends_with(L']'))
                state.source |= kSourceIgnored;
            open.Open(line.View());
            break;
        case L'}':
            openBraces -= openBraces != 0 ? 1 : 0;
            NoteIgnored(state, line.View().substr(1));
            if (open.IsEmpty())
                return IgnoreRest(state); // end of the root
            open.Close();
            break;
        default:
            AppendLeaf(state, open.Current(), line);
        }
    }
    // Files written by hand may have no braces at all.
    if (openBraces != 0)
        state.source |= kSourceTruncated;
    open.CloseAll(); // missing closing braces are no error
}

} // namespace

void NoteIgnored(scParseState& state, std::wstring_view text)
{
    if (text.starts_with(L'#') || text.starts_with(L';'))
        state.source |= kSourceComments;
    else if (!IsBlank(text))
        state.source |= kSourceIgnored;
}

void IgnoreRest(scParseState& state)
{
    scProfLine line;
    while (state.reader.NextLine(line))
        NoteIgnored(state, line.View());
}

void ParseLevel(scParseState& state, int level, clsItemList& list)
{
    switch (state.form)
    {
    case ProfForm::Xml:
        ParseXmlLines(state, level, list);
        break;
    case ProfForm::Xfdf:
        ParseXfdfLines(state, level, list);
        break;
    case ProfForm::Text:
        if (level != kBeforeRoot || FindRoot(state))
            ParseTextLines(state, list);
        break;
    }
}

void ParseIni(scParseState& state, clsItemList& list)
{
    state.source |= kSourceForeign | kSourceIni;
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        if (line.text[0] == L'[')
        {
            ParseLevel(state, 0, list);
            return;
        }
    }
}

void DecodeName(wchar_t* name, std::size_t length)
{
    for (wchar_t* c = name; c != name + length; ++c)
    {
        switch (*c)
        {
        case kEncodedEquals:
            *c = L'=';
            break;
        case kEncodedOpen:
            *c = L'[';
            break;
        case kEncodedClose:
            *c = L']';
            break;
        default:
            break;
        }
    }
}

void DecodeValue(wchar_t* value, std::size_t length)
{
    for (wchar_t* c = value; c != value + length; ++c)
    {
        if (*c > kControlPictures && *c < kControlPictures + L' ')
            *c = static_cast<wchar_t>(*c - kControlPictures);
    }
}

} // namespace qx
