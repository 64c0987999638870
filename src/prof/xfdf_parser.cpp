#include "prof/xfdf_form.h"

#include "prof/load_exception.h"
#include "prof/xml_line.h"

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
                    return;
                _text.SkipBlanks();
            }
        }
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
            _fields.Pop();
        }
        else if (_level == kBeforeRoot && TakeTag(L"xfdf "))
        {
            _level = 0;
            SkipTag();
        }
        else if (_level == 0 && TakeTag(L"/xfdf>"))
            return false;
        else if (TakeTag(L"!--"))
            SkipBehind(L"-->");
        else
            SkipTag();
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
        _fields.Push(name);
        SkipTag();
        if (_text.begin[-1] == L'>' && _text.begin[-2] == L'/')
            _fields.Pop(); // an empty element
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

    void AppendLeaf(std::wstring_view value)
    {
        const std::wstring_view name = _fields.View();
        if (_fields.TakeNew())
        {
            _nameCharacters += name.size();
            if (_nameCharacters > MostXfdfNameCharacters(_state.reader.SourceBytes()))
                Fail(L"prof::xml::field: too many fields inside each other");
        }
        _list.AppendItem(_state.job.NewLeaf(name, value));
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
    std::vector<wchar_t> _value; // a value that spans lines
    std::uint64_t _nameCharacters = 0;
};

} // namespace

void ParseXfdfLines(scParseState& state, int level, clsItemList& list)
{
    clsXfdfParser(state, level, list).Run();
}

} // namespace qx
