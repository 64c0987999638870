#include "prof/xfdf_form.h"

#include "prof/load_exception.h"
#include "prof/text_scan.h"
#include "prof/xml_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace qx
{

namespace
{

// The names of the open fields, outermost first, joined by dots.
class clsFieldPath
{
public:
    void Push(std::wstring_view name)
    {
        _lengths.push_back(_path.size());
        if (_lengths.size() > 1)
            _path.push_back(L'.');
        _path.insert(_path.end(), name.begin(), name.end());
        _isNew = true;
    }

    // Does nothing if no field is open.
    void Pop()
    {
        if (_lengths.empty())
            return;
        _path.resize(_lengths.back());
        _lengths.pop_back();
        _isNew = true;
    }

    std::wstring_view View() const { return {_path.data(), _path.size()}; }
    std::size_t Depth() const { return _lengths.size(); }

    // Returns true for the first call after a change of the path. Only then does the tree store the path as a new text.
    bool TakeNew() { return std::exchange(_isNew, false); }

private:
    std::vector<wchar_t> _path;
    std::vector<std::size_t> _lengths; // the length of the path before each name
    bool _isNew = true;
};

class clsXfdfParser
{
public:
    clsXfdfParser(scParseState& state, int level, clsItemList& list) : _state(state), _level(level), _list(list) {}

    void Run()
    {
        while (NextLine())
        {
            if (_text.IsEmpty())
                continue;
            if (*_text.begin != L'<')
                Fail(L"prof::xml::xfdf: bad format ('<' expected)");
            // Other software writes several tags on one line. Text between tags is skipped.
            while (*_text.begin == L'<')
            {
                ++_text.begin;
                if (!ParseTag())
                {
                    NoteIgnored(_state, _text.View());
                    return IgnoreRest(_state);
                }
                _text.SkipBlanks();
            }
            NoteIgnored(_state, _text.View());
        }
        _state.source |= kSourceTruncated;
    }

private:
    bool NextLine()
    {
        scProfLine line;
        if (!_state.reader.NextLine(line))
            return false;
        ++_state.lineCounter;
        _text = {line.text, line.text + line.length};
        return true;
    }

    // Parses a tag, starting after its '<', and a value together with its contents. Returns false if reading is
    // finished.
    bool ParseTag()
    {
        if (TakeTag(L"value>"))
        {
            ExpectLevel(L"prof::xml::value: bad format (negative level)");
            AppendLeaf(ReadValue());
        }
        else if (TakeTag(L"value/>"))
        {
            ExpectLevel(L"prof::xml::value: bad format (negative level)");
            AppendLeaf({});
        }
        else if (TakeTag(L"field "))
        {
            ExpectLevel(L"prof::xml::field: bad format (negative level)");
            BeginField();
        }
        else if (TakeTag(L"/field>"))
        {
            ExpectLevel(L"prof::xml::field: bad format (negative level)");
            EndField();
        }
        else if (_level == kBeforeRoot && TakeTag(L"xfdf "))
        {
            _level = 0;
            SkipTag();
        }
        else if (_level == 0 && TakeTag(L"/xfdf>"))
            return false;
        else if (TakeTag(L"!--"))
        {
            _state.source |= kSourceComments;
            SkipBehind(L"-->");
        }
        else
        {
            if (!TakeTag(L"fields>") && !TakeTag(L"/fields>") && !(_level == kBeforeRoot && TakeTag(L"?xml ")))
                _state.source |= kSourceIgnored;
            else if (_text.begin[-1] == L'>')
                return true;
            SkipTag();
        }
        return true;
    }

    bool TakeTag(std::wstring_view tag)
    {
        if (!BeginsWithTag(_text.View(), tag))
            return false;
        _text.begin += tag.size();
        return true;
    }

    // Skips to the end of the line if `what` isn't found.
    void SkipBehind(std::wstring_view what)
    {
        wchar_t* const found = _text.Find(what);
        _text.begin = found != nullptr ? found + what.size() : _text.end;
    }
    void SkipTag() { SkipBehind(L">"); }

    void BeginField()
    {
        std::wstring_view name;
        switch (TakeName(_text, name))
        {
        case XmlNameFault::None:
            break;
        case XmlNameFault::Missing:
            Fail(L"prof::xml::field: no name found");
        case XmlNameFault::Unfinished:
            Fail(L"prof::xml::field: name unfinished");
        }
        NoteText(name);
        _fields.Push(name);
        _isEmpty = true;
        if (*_text.begin != L'>')
            _state.source |= kSourceIgnored; // other attributes, or a field without a value
        SkipTag();
        if (_text.begin[-1] == L'>' && _text.begin[-2] == L'/')
            EndField(); // an empty element
    }

    // Returns the unmasked value. A value may span lines; leading blanks of its lines and empty lines are dropped.
    std::wstring_view ReadValue()
    {
        constexpr std::wstring_view kEnd = L"</value>";
        wchar_t* end = _text.Find(kEnd);
        if (end != nullptr)
        {
            wchar_t* const value = std::exchange(_text.begin, end + kEnd.size());
            return Unmasked(value, end);
        }
        _state.source |= kSourceIgnored; // the value's empty lines and leading blanks are dropped
        _value.assign(_text.begin, _text.end);
        do
        {
            if (!NextLine())
                Fail(L"prof::xml::value: bad format (missing next line)");
            end = _text.Find(kEnd);
            _value.push_back(L'\r');
            _value.push_back(L'\n');
            _value.insert(_value.end(), _text.begin, end != nullptr ? end : _text.end);
        } while (end == nullptr);
        _text.begin = end + kEnd.size();
        return Unmasked(_value.data(), _value.data() + _value.size());
    }

    // Appends a leaf whose name is the path of the open fields. The values of one field share its name. A name that
    // can't be shared is copied, and counted, for each value.
    void AppendLeaf(std::wstring_view value)
    {
        const std::wstring_view name = _fields.View();
        const bool isNew = _fields.TakeNew();
        if (!isNew || _fields.Depth() != 1)
            _state.source |= kSourceFlattened;
        NoteText(value);
        _isEmpty = false;
        if (isNew || _sharedName == nullptr)
        {
            _nameCharacters += name.size();
            if (_nameCharacters > MostXfdfNameCharacters(_state.reader.SourceBytes()))
                Fail(L"prof::xml::field: too many fields inside each other");
        }
        if (isNew)
            _sharedName = _state.job.SharedName(name);
        _list.AppendItem(
            _sharedName != nullptr ? _state.job.NewLeaf(*_sharedName, value) : _state.job.NewLeaf(name, value));
    }

    // Ends the innermost field. A field without any value isn't stored.
    void EndField()
    {
        if (_isEmpty)
            _state.source |= kSourceIgnored;
        _isEmpty = false;
        _fields.Pop();
    }

    // Sets kSourceIgnored if the text contains control characters that XML can't represent.
    void NoteText(std::wstring_view text)
    {
        if (HasControlCharacter(text) &&
            std::any_of(
                text.begin(), text.end(), [](wchar_t c) { return c < L' ' && c != L'\t' && c != L'\r' && c != L'\n'; }))
            _state.source |= kSourceIgnored;
    }

    void ExpectLevel(const wchar_t* message) const
    {
        if (_level < 0)
            Fail(message);
    }

    [[noreturn]] void Fail(const wchar_t* message) const
    {
        throw new clsLoadException(_state.lineCounter, message, String(_fields.View()));
    }

    scParseState& _state;
    int _level;
    clsItemList& _list;
    scXmlText _text{nullptr, nullptr};
    clsFieldPath _fields;
    std::vector<wchar_t> _value;             // a value that spans lines
    const scProfText* _sharedName = nullptr; // of the open fields
    std::uint64_t _nameCharacters = 0;
    bool _isEmpty = false; // the innermost field contains neither values nor fields so far
};

} // namespace

void ParseXfdfLines(scParseState& state, int level, clsItemList& list)
{
    clsXfdfParser(state, level, list).Run();
}

} // namespace qx
