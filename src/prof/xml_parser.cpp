#include "prof/xml_form.h"

#include "prof/load_exception.h"
#include "prof/open_lists.h"
#include "prof/xfdf_form.h"
#include "prof/xml_line.h"

namespace qx
{

namespace
{

class clsXmlParser
{
public:
    clsXmlParser(scParseState& state, int level, clsItemList& list)
        : _state(state),
          _level(level),
          _list(list),
          _open(state.job, list)
    {
    }

    void Run()
    {
        scProfLine line;
        while (_state.reader.NextLine(line))
        {
            ++_state.lineCounter;
            const scXmlText text{line.text, line.text + line.length};
            const bool isHead = _level < 0 && IsHeadLine(text.View());
            const std::uint32_t sourceBefore = _state.source;
            if (!ParseLine(text))
                return IgnoreRest(_state);
            if (isHead)
                _state.source = sourceBefore;
        }
        _state.source |= kSourceTruncated;
        _open.CloseAll(); // missing end tags are no error
    }

private:
    // An action returns false if reading is finished.
    using Action = bool (clsXmlParser::*)(scXmlText behindTag);

    enum class Place
    {
        InProfile,  // at level 0 or deeper
        BeforeRoot, // at level -1
        AtRoot      // at level 0
    };

    // A tag, identified by its beginning; the place where it is allowed; and the error message for other places.
    struct scTag
    {
        std::wstring_view beginning;
        Place place;
        const wchar_t* misplaced;
        Action action;
    };

    static bool IsHeadLine(std::wstring_view line) { return line == kXmlFirstLine || IsXmlHeadLine(line); }

    bool ParseLine(scXmlText text)
    {
        if (_state.inComment && text.View().starts_with(L"-->"))
        {
            _state.inComment = false;
            text.begin += 3;
            text.SkipBlanks();
        }
        if (text.IsEmpty())
            return true;
        ExpectTag(text);
        if (!_state.inComment && text.View().starts_with(L"<!--"))
        {
            _state.inComment = true;
            _state.source |= kSourceComments;
            text.begin += 4;
            text.SkipBlanks();
        }
        if (_state.inComment)
        {
            if (!EndComment(text) || text.IsEmpty())
                return true;
            ExpectTag(text);
        }
        ++text.begin;
        return ParseTag(text);
    }

    void ExpectTag(const scXmlText& text) const
    {
        if (*text.begin != L'<')
            Fail(L"prof::xml: bad format");
    }

    // Moves past the end of a comment, which must follow a blank or tab; ParseLine handles an end at the beginning of a
    // line. Returns false if the comment doesn't end.
    bool EndComment(scXmlText& text)
    {
        wchar_t* end = text.Find(L" -->");
        if (end == nullptr)
            end = text.Find(L"\t-->");
        if (end == nullptr)
            return false;
        _state.inComment = false;
        text.begin = end + 4;
        text.SkipBlanks();
        return true;
    }

    bool ParseTag(scXmlText text);

    bool IsAt(Place place) const
    {
        switch (place)
        {
        case Place::InProfile:
            return _level >= 0;
        case Place::BeforeRoot:
            return _level == kBeforeRoot;
        default:
            return _level == 0 && _open.IsEmpty();
        }
    }

    bool ParseItem(scXmlText text)
    {
        const bool beginsWithName = BeginsWithName(text);
        std::wstring_view name;
        switch (TakeName(text, name))
        {
        case XmlNameFault::None:
            break;
        case XmlNameFault::Missing:
            Fail(L"prof::xml::item empty name");
        case XmlNameFault::Unfinished:
            Fail(L"prof::xml::item no end tag");
        }
        NoteTag(beginsWithName, text);
        wchar_t* const tagEnd = text.Find(L">");
        if (tagEnd == nullptr)
            Fail(L"prof::xml::item no end tag (2)");
        text.begin = tagEnd + 1;
        wchar_t* const valueEnd = text.Find(L"</item>");
        if (valueEnd == nullptr)
            Fail(L"prof::xml::item no '</item>' tag found");

        NoteIgnored(_state, {valueEnd + 7, static_cast<std::size_t>(text.end - valueEnd) - 7});
        const std::wstring_view value = Unmasked(text.begin, valueEnd);
        const bool wasMasked = text.begin + value.size() != valueEnd;
        if (wasMasked && HasSingleBreak(value))
            _state.source |= kSourceIgnored;
        text.begin[value.size()] = 0;
        clsItemList& list = _open.Current();
        clsProfJob& job = _state.job;
        list.AppendItem(
            _state.reader.IsWide() ? job.NewLeafInImage(name, value.data(), value.size()) : job.NewLeaf(name, value));
        return true;
    }

    bool BeginList(scXmlText text)
    {
        const bool beginsWithName = BeginsWithName(text);
        std::wstring_view name;
        switch (TakeName(text, name))
        {
        case XmlNameFault::None:
            break;
        case XmlNameFault::Missing:
            Fail(L"prof::xml::list: name is empty");
        case XmlNameFault::Unfinished:
            Fail(L"prof::xml::list: name is unfinished");
        }
        NoteTag(beginsWithName, text);
        if (!text.IsEmpty())
            NoteIgnored(_state, text.View().substr(1));
        _open.Open(name);
        return true;
    }

    bool EndList(scXmlText text)
    {
        NoteIgnored(_state, text.View());
        if (_open.IsEmpty())
            return false;
        _open.Close();
        return true;
    }

    bool BeginProfile(scXmlText text)
    {
        NoteIgnored(_state, text.View());
        _level = 0;
        return true;
    }

    bool BeginXfdf(scXmlText)
    {
        _state.form = ProfForm::Xfdf;
        ParseXfdfLines(_state, 0, _list);
        return false;
    }

    bool End(scXmlText text)
    {
        NoteIgnored(_state, text.View());
        return false;
    }

    // Sets kSourceIgnored if the tag has attributes other than the name.
    void NoteTag(bool beginsWithName, const scXmlText& rest)
    {
        if (!beginsWithName || *rest.begin != L'>')
            _state.source |= kSourceIgnored;
    }

    // Returns true if the value contains a line feed or carriage return alone, which is written like a pair of both.
    static bool HasSingleBreak(std::wstring_view value)
    {
        for (std::size_t at = value.find_first_of(L"\r\n"); at != std::wstring_view::npos;
             at = value.find_first_of(L"\r\n", at + 2))
        {
            if (value.substr(at, 2) != L"\r\n")
                return true;
        }
        return false;
    }

    [[noreturn]] void Fail(const wchar_t* message) const { throw new clsLoadException(_state.lineCounter, message); }

    scParseState& _state;
    int _level; // the level at which parsing began
    clsItemList& _list;
    clsOpenLists _open;
};

// The first matching tag is used. Unknown tags, including the head, are skipped.
bool clsXmlParser::ParseTag(scXmlText text)
{
    static constexpr scTag kTags[] = {
        {L"item ", Place::InProfile, L"prof::xml::item bad nesting level (becomes negative)", &clsXmlParser::ParseItem},
        {L"list ", Place::InProfile, L"prof::xml::list: bad nesting level", &clsXmlParser::BeginList},
        {L"/list>", Place::InProfile, L"prof::xml::profile: bad nesting level (becomes negative)",
            &clsXmlParser::EndList},
        {L"profile>", Place::BeforeRoot, L"prof::xml::profile: bad nesting level (should be -1)",
            &clsXmlParser::BeginProfile},
        {L"/profile>", Place::AtRoot, L"prof::xml::profile: bad nesting level (should be 0)", &clsXmlParser::End},
        {L"xfdf ", Place::BeforeRoot, L"prof::xml::xfdf: bad nesting level (should be -1)", &clsXmlParser::BeginXfdf},
        {L"/xfdf>", Place::AtRoot, L"prof::xml::xfdf: bad nesting level (should be 0)", &clsXmlParser::End},
    };
    for (const scTag& tag : kTags)
    {
        if (!BeginsWithTag(text.View(), tag.beginning))
            continue;
        if (!IsAt(tag.place))
            Fail(tag.misplaced);
        text.begin += tag.beginning.size();
        return (this->*tag.action)(text);
    }
    _state.source |= kSourceIgnored;
    return true;
}

} // namespace

void ParseXmlLines(scParseState& state, int level, clsItemList& list)
{
    clsXmlParser(state, level, list).Run();
}

} // namespace qx
