#include "prof/text_form.h"

#include "prof/load_exception.h"

#include <vector>

namespace qx
{

namespace
{

// The lists that have begun and not ended, innermost last. They take the place of a recursion, whose depth a file would
// otherwise choose. Each is in its parent's care only when it has ended.
class clsOpenLists
{
public:
    clsOpenLists(clsProfJob& job, clsItemList& base) : _job(job), _base(base) {}
    clsOpenLists(const clsOpenLists&) = delete;
    clsOpenLists& operator=(const clsOpenLists&) = delete;
    ~clsOpenLists()
    {
        for (clsItem* entry : _entries)
            _job.ReleaseItem(*entry);
    }

    bool IsEmpty() const { return _entries.empty(); }
    clsItemList& Current() const { return _entries.empty() ? _base : *_entries.back()->List(); }

    void Open(std::wstring_view name)
    {
        clsItem& entry = _job.NewList(Current(), name);
        _entries.push_back(&entry);
    }

    void Close()
    {
        clsItem& entry = *_entries.back();
        _entries.pop_back();
        Current().AppendItem(entry);
    }

    void CloseAll()
    {
        while (!IsEmpty())
            Close();
    }

private:
    clsProfJob& _job;
    clsItemList& _base;
    std::vector<clsItem*> _entries;
};

void DecodePart(wchar_t* text, size_t length, void (*decode)(wchar_t*, size_t), bool mayBeEncoded)
{
    if (mayBeEncoded)
        decode(text, length);
}

void AppendLeaf(scParseState& state, clsItemList& list, const scProfLine& line)
{
    const size_t equals = line.View().find(L'=');
    const bool hasValue = equals != std::wstring_view::npos;
    const size_t nameLength = hasValue ? equals : line.length;
    wchar_t* const value = line.text + (hasValue ? equals + 1 : line.length);
    const size_t valueLength = line.length - static_cast<size_t>(value - line.text);
    DecodePart(line.text, nameLength, DecodeName, line.mayBeEncoded);
    DecodePart(value, valueLength, DecodeValue, line.mayBeEncoded);

    const std::wstring_view name(line.text, nameLength);
    clsProfJob& job = state.job;
    list.AppendItem(state.reader.IsWide() ? job.NewLeafInImage(list, name, value, valueLength)
                                          : job.NewLeaf(list, name, {value, valueLength}));
}

// Without the marker nothing is read, whatever the lines hold.
bool FindRoot(scParseState& state)
{
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        ++state.lineCounter;
        if (line.View() == L"[/]")
            return true;
    }
    return false;
}

void ParseTextLines(scParseState& state, clsItemList& list)
{
    clsOpenLists open(state.job, list);
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        ++state.lineCounter;
        switch (line.text[0])
        {
        case 0: // nothing but blanks
        case L'#':
        case L';':
        case L'{':
            break;
        case L'[':
            open.Open(line.View());
            break;
        case L'}':
            if (open.IsEmpty())
                return; // the root has ended; the rest isn't read
            open.Close();
            break;
        default:
            AppendLeaf(state, open.Current(), line);
        }
    }
    open.CloseAll(); // a missing brace is no error
}

// The forms that aren't read yet.
void RefuseForm(scParseState& state)
{
    scProfLine line;
    while (state.reader.NextLine(line))
    {
        ++state.lineCounter;
        if (line.length != 0)
            throw new clsLoadException(state.lineCounter, L"prof::xml: this form isn't read yet");
    }
}

} // namespace

void ParseLevel(scParseState& state, int level, clsItemList& list)
{
    if (state.form != ProfForm::Text)
    {
        RefuseForm(state);
        return;
    }
    if (level != kBeforeRoot || FindRoot(state))
        ParseTextLines(state, list);
}

void ParseIni(scParseState& state, clsItemList& list)
{
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

void DecodeName(wchar_t* name, size_t length)
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

void DecodeValue(wchar_t* value, size_t length)
{
    for (wchar_t* c = value; c != value + length; ++c)
    {
        if (*c > kControlPictures && *c < kControlPictures + L' ')
            *c = static_cast<wchar_t>(*c - kControlPictures);
    }
}

} // namespace qx
