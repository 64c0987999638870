#include "core/pattern/regex.h"

#include "core/debug_line.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qx
{

namespace
{

constexpr std::uint32_t kCompileFlags = PCRE2_CASELESS | PCRE2_DOLLAR_ENDONLY | PCRE2_DOTALL | PCRE2_EXTENDED |
                                        PCRE2_MULTILINE | PCRE2_UNGREEDY | PCRE2_ANCHORED;
constexpr std::uint32_t kMatchFlags =
    PCRE2_PARTIAL_SOFT | PCRE2_ANCHORED | PCRE2_NOTBOL | PCRE2_NOTEOL | PCRE2_NOTEMPTY;
static_assert(kCompileFlags == 0x800404B8 && kMatchFlags == 0x80000017);

constexpr std::size_t kErrorTextSize = 200;

// The only place where the library's characters are converted to PCRE2's. Both are UTF-16 code units of 16 bits.
static_assert(sizeof(wchar_t) == sizeof(PCRE2_UCHAR16));

PCRE2_SPTR16 EngineText(const wchar_t* text)
{
    return reinterpret_cast<PCRE2_SPTR16>(text);
}

PCRE2_UCHAR16* EngineText(wchar_t* text)
{
    return reinterpret_cast<PCRE2_UCHAR16*>(text);
}

// Copies the characters, including zeros.
String MakeText(const wchar_t* text, std::size_t length)
{
    String result;
    result.Append(text, length);
    return result;
}

// Collects a long text piece by piece. String would reallocate in small steps, so the String is created once at the
// end.
class TextCollector
{
public:
    void Append(const wchar_t* text, std::size_t length) { _text.insert(_text.end(), text, text + length); }
    void Append(const String& text) { Append(text.Text(), text.Length()); }
    String Finish() const { return MakeText(_text.data(), _text.size()); }

private:
    std::vector<wchar_t> _text;
};

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// Splits a replacement template into literal text and references to groups. Calls literal(text, length) and
// reference(group) in order.
template <class Literal, class Reference>
void WalkTemplate(const wchar_t* text, Literal literal, Reference reference)
{
    const wchar_t* pending = text;
    while (*text != 0)
    {
        if (text[0] == L'\\' && text[1] == L'\\')
        {
            text += 2; // both backslashes are kept, and the second one doesn't escape the next character
        }
        else if (text[0] == L'\\' && IsDigit(text[1]))
        {
            literal(pending, static_cast<std::size_t>(text - pending));
            reference(static_cast<std::size_t>(text[1] - L'0'));
            text += 2;
            pending = text;
        }
        else
        {
            ++text;
        }
    }
    literal(pending, static_cast<std::size_t>(text - pending));
}

} // namespace

const scRegExMatch& clsRegExMatchList::operator[](std::size_t index) const
{
    static const scRegExMatch kNone;
    const scRegExMatch* match = IsEmpty() ? nullptr : At(static_cast<std::ptrdiff_t>(std::min(index, Count() - 1)));
    return match != nullptr ? *match : kNone;
}

clsRegEx::clsRegEx(const String& pattern, std::uint32_t flags) : _pattern(pattern), _flags(flags) {}

clsRegEx::clsRegEx(const wchar_t* pattern, std::uint32_t flags) : _pattern(pattern), _flags(flags) {}

clsRegEx::~clsRegEx()
{
    Free();
}

void clsRegEx::Free()
{
    const clsCriticalSectionLock lock(_lock);
    pcre2_match_data_free_16(_pRegMatchData);
    pcre2_code_free_16(_code);
    _pRegMatchData = nullptr;
    _code = nullptr;
}

bool clsRegEx::Compile()
{
    const clsCriticalSectionLock lock(_lock);
    Free();
    _errorText.Empty();

    int errorCode = 0;
    PCRE2_SIZE errorOffset = 0;
    _code = pcre2_compile_16(
        EngineText(_pattern.Text()), PCRE2_ZERO_TERMINATED, _flags & kCompileFlags, &errorCode, &errorOffset, nullptr);
    if (_code == nullptr)
    {
        wchar_t message[kErrorTextSize + 1] = {};
        pcre2_get_error_message_16(errorCode, EngineText(message), kErrorTextSize);
        message[kErrorTextSize] = 0;
        _errorText.Assign(message);
        DebugLine(L"Error in RegEx offset %d: '%ws'", static_cast<int>(errorOffset), message);
    }
    return _code != nullptr;
}

String clsRegEx::ErrorText()
{
    const clsCriticalSectionLock lock(_lock);
    return _errorText;
}

bool clsRegEx::Match(const String& subject, clsRegExMatchList* matches)
{
    const clsCriticalSectionLock lock(_lock);
    return MatchStretch({subject.Text(), subject.Length()}, matches);
}

bool clsRegEx::Match(const wchar_t* subject, clsRegExMatchList* matches)
{
    const clsCriticalSectionLock lock(_lock);
    const wchar_t* const text = subject != nullptr ? subject : L"";
    return MatchStretch({text, wcslen(text)}, matches);
}

bool clsRegEx::MatchStretch(const Stretch& subject, clsRegExMatchList* matches)
{
    const Found found = Search(subject);
    if (found.groups != 0 && matches != nullptr)
    {
        GiveMatches(subject, found.groups, *matches);
    }
    return found.groups != 0;
}

// Always passes the rest of the text without a start offset, so that the engine can't look at earlier text.
clsRegEx::Found clsRegEx::Search(const Stretch& subject)
{
    if (_code == nullptr && !Compile())
    {
        return {};
    }
    if (_pRegMatchData == nullptr)
    {
        // If memory runs out, the match below fails.
        _pRegMatchData = pcre2_match_data_create_from_pattern_16(_code, nullptr);
    }

    const int groups = pcre2_match_16(
        _code, EngineText(subject.text), subject.length, 0, _flags & kMatchFlags, _pRegMatchData, nullptr);
    if (groups < 0)
    {
        return {};
    }
    if (groups == 0)
    {
        DebugLine(L"clsRegEx: error: _pRegMatchData too small, or something else happened");
        return {};
    }
    return {static_cast<std::size_t>(groups), pcre2_get_ovector_pointer_16(_pRegMatchData)[0],
        GroupText(subject, 0).length};
}

// Returns the text of a group. The last search must have been on this subject.
clsRegEx::Stretch clsRegEx::GroupText(const Stretch& subject, std::size_t group) const
{
    const PCRE2_SIZE* const range = pcre2_get_ovector_pointer_16(_pRegMatchData) + 2 * group;
    const std::size_t start = range[0];
    const std::size_t end = std::min<std::size_t>(range[1], subject.length);
    if (start >= end) // a group that took no part has a start with all bits set
    {
        return {};
    }
    return {subject.text + start, end - start};
}

void clsRegEx::GiveMatches(const Stretch& subject, std::size_t groups, clsRegExMatchList& matches) const
{
    matches.Clear();
    for (std::size_t group = 0; group < groups; ++group)
    {
        const Stretch text = GroupText(subject, group);
        matches.Emplace(
            scRegExMatch{pcre2_get_ovector_pointer_16(_pRegMatchData)[2 * group], MakeText(text.text, text.length)});
    }
}

template <class Replace>
String clsRegEx::Substitute(const String& subject, Replace replace)
{
    const clsCriticalSectionLock lock(_lock);
    const String held = subject; // a callback may change the caller's string
    Stretch rest{held.Text(), held.Length()};
    TextCollector result;
    while (rest.length != 0)
    {
        const Found found = Search(rest);
        if (found.groups == 0)
        {
            result.Append(rest.text, rest.length);
            break;
        }
        result.Append(rest.text, std::min(found.position, rest.length));
        const bool goOn = replace(rest, found, result);

        const std::size_t advance = std::min(found.position + found.length, rest.length);
        if (advance == 0)
        {
            break; // the empty match would be found forever; the rest is dropped
        }
        rest = {rest.text + advance, rest.length - advance};
        if (!goOn)
        {
            result.Append(rest.text, rest.length);
            break;
        }
    }
    return result.Finish();
}

String clsRegEx::GSub(const String& subject, const wchar_t* replacementTemplate)
{
    if (replacementTemplate == nullptr)
    {
        replacementTemplate = L"";
    }
    return Substitute(subject,
        [&](const Stretch& rest, const Found& found, TextCollector& result)
        {
            WalkTemplate(
                replacementTemplate, [&](const wchar_t* text, std::size_t length) { result.Append(text, length); },
                [&](std::size_t group)
                {
                    if (group >= found.groups)
                    {
                        DebugLine(L"ERR: clsRegEx: Match(%d) not found (index too large, found only %d entries)",
                            static_cast<int>(group), static_cast<int>(found.groups));
                        return;
                    }
                    const Stretch text = GroupText(rest, group);
                    result.Append(text.text, text.length);
                });
            return true;
        });
}

String clsRegEx::GSub(const String& subject, IclsRegExGSubCB& callback)
{
    clsRegExMatchList matches;
    return Substitute(subject,
        [&](const Stretch& rest, const Found& found, TextCollector& result)
        {
            GiveMatches(rest, found.groups, matches);
            result.Append(callback.OnMatch(matches));
            return true;
        });
}

String clsRegEx::GSub(const String& subject, std::function<bool(const clsRegExMatchList&, String&)> callback)
{
    clsRegExMatchList matches;
    return Substitute(subject,
        [&](const Stretch& rest, const Found& found, TextCollector& result)
        {
            GiveMatches(rest, found.groups, matches);
            String replacement = matches[0].text;
            const bool goOn = callback(matches, replacement);
            result.Append(replacement);
            return goOn;
        });
}

WCValSList<String> clsRegEx::MatchAll(const String& subject)
{
    const clsCriticalSectionLock lock(_lock);
    WCValSList<String> result;
    Stretch rest{subject.Text(), subject.Length()};
    while (rest.length != 0)
    {
        const Found found = Search(rest);
        if (found.groups == 0)
        {
            break;
        }
        const Stretch text = GroupText(rest, found.groups > 1 ? 1 : 0);
        result.Append(MakeText(text.text, text.length));
        const std::size_t advance = std::min(found.position + found.length, rest.length);
        if (advance == 0)
        {
            break;
        }
        rest = {rest.text + advance, rest.length - advance};
    }
    return result;
}

WCValSList<String> clsRegEx::Split(const String& subject)
{
    const clsCriticalSectionLock lock(_lock);
    WCValSList<String> result;
    Stretch rest{subject.Text(), subject.Length()};
    while (true)
    {
        const Found found = Search(rest);
        if (found.groups == 0)
        {
            result.Append(MakeText(rest.text, rest.length));
            return result;
        }
        result.Append(MakeText(rest.text, std::min(found.position, rest.length)));
        const std::size_t advance = std::min(found.position + found.length, rest.length);
        if (advance == 0)
        {
            return result;
        }
        rest = {rest.text + advance, rest.length - advance};
    }
}

String clsRegEx::Quote(const String& text)
{
    const std::size_t length = text.Length();
    String result;
    if (length == 0)
    {
        return result;
    }
    wchar_t* const buffer = result.GetBuffer(2 * length + 1);
    std::size_t written = 0;
    for (std::size_t i = 0; i < length; ++i)
    {
        const wchar_t c = text.CharAt(i);
        if (c != 0 && wcschr(L".|()[^{+$*?\\", c) != nullptr)
        {
            buffer[written++] = L'\\';
        }
        buffer[written++] = c;
    }
    result.ReleaseBuffer(written);
    return result;
}

} // namespace qx
