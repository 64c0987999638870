#include "docinfo/mail_address.h"

#include "docinfo/mail_words.h"
#include "docinfo/punycode.h"
#include "docinfo/text_scan.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace qx
{
namespace
{

constexpr wchar_t kDelete = 127;

constexpr bool IsControl(wchar_t c)
{
    return c < L' ' || c == kDelete;
}

constexpr bool IsBlankOrTab(wchar_t c)
{
    return c == L' ' || c == L'\t';
}

void TrimBlanks(TextBuffer& text)
{
    text.resize(text.find_last_not_of(L' ') + 1);
}

class AddressFieldParser
{
public:
    explicit AddressFieldParser(std::wstring_view field) : _field(field), _words(field) {}

    WCValDList<clsParseItem> Parse()
    {
        while (_position < _field.size() && Step(_field[_position]))
        {
        }
        End();
        return std::move(_items);
    }

private:
    enum class State
    {
        Plain,
        Quoted,
        Comment,
        Angle,
        Escape
    };

    // Handles the current character and everything that belongs to it. Returns false if the field ends at this
    // position.
    bool Step(wchar_t c)
    {
        switch (_state)
        {
        case State::Plain:
            return StepPlain(c);
        case State::Quoted:
            Add(c);
            if (c == L'"')
                Finish(ParseItemKind::Word);
            return true;
        case State::Comment:
            StepComment(c);
            return true;
        case State::Angle:
            Add(c);
            if (c == L'>')
                FinishAngle();
            return true;
        case State::Escape:
            Add(c);
            _state = State::Plain;
            return true;
        }
        return false;
    }

    bool StepPlain(wchar_t c)
    {
        if (c == L'=' && TakeWord())
            return true;
        if (IsBlankOrTab(c))
        {
            TakeBlanks();
            return true;
        }
        if (IsControl(c))
        {
            _items.Clear();
            return false;
        }
        if (c == L'\\')
        {
            _state = State::Escape;
            ++_position;
            return true;
        }
        if (c == L'<')
            Flush();
        _state = c == L'"' ? State::Quoted : c == L'(' ? State::Comment : c == L'<' ? State::Angle : State::Plain;
        Add(c);
        return true;
    }

    // Handles a character inside a comment. If an encoded word follows, the word replaces the character.
    void StepComment(wchar_t c)
    {
        if (c == L')')
        {
            Add(c);
            Finish(ParseItemKind::Comment);
            return;
        }
        const std::optional<EncodedWord> word = _words.At(_position + 1);
        if (!word)
        {
            Add(c);
            return;
        }
        _token += DecodeWord(*word).View();
        _position += 1 + word->length;
        while (_position < _field.size() && _field[_position] == L' ')
            ++_position;
    }

    // Appends the encoded word at the current position, if there is one. Text directly before the word is still being
    // collected, so it ends up after the word.
    bool TakeWord()
    {
        const std::optional<EncodedWord> word = _words.At(_position);
        if (!word)
            return false;
        TextBuffer text(DecodeWord(*word).View());
        TrimBlanks(text);
        Append(ParseItemKind::Word, _position, std::move(text));
        _position += word->length;
        return true;
    }

    void TakeBlanks()
    {
        Flush();
        Append(ParseItemKind::Blank, _position, L" ");
        while (_position < _field.size() && IsBlankOrTab(_field[_position]))
            ++_position;
    }

    // Ends an address in angle brackets. "<EX:...>" is dropped: mail servers write it for addresses that only they
    // understand.
    void FinishAngle()
    {
        if (_token.starts_with(L"<EX:"))
            _token.clear();
        else
            Finish(ParseItemKind::Address);
        _state = State::Plain;
    }

    void Add(wchar_t c)
    {
        if (_token.empty())
            _tokenBegin = _position;
        _token.push_back(c);
        ++_position;
    }

    void Flush()
    {
        if (_token.empty())
            return;
        TrimBlanks(_token);
        Finish(ParseItemKind::Word);
    }

    void Finish(ParseItemKind kind)
    {
        Append(kind, _tokenBegin, std::exchange(_token, {}));
        _state = State::Plain;
    }

    // Ends the field. The token of an unfinished quotation or comment is never empty, because it contains the opening
    // character.
    void End()
    {
        if (_token.empty())
            return;
        const bool isAddress = _items.IsEmpty() && IsMailAddress(_token);
        _token = DecodeMailDomain(_token);
        if (!isAddress)
            TrimBlanks(_token);
        Finish(isAddress ? ParseItemKind::Address : ParseItemKind::Word);
    }

    void Append(ParseItemKind kind, std::size_t position, TextBuffer text)
    {
        _items.Append(clsParseItem{kind, position, std::move(text)});
    }

    const std::wstring_view _field;
    EncodedWords _words;
    State _state = State::Plain;
    std::size_t _position = 0;
    TextBuffer _token;
    std::size_t _tokenBegin = 0;
    WCValDList<clsParseItem> _items;
};

// Returns true for the characters of an atom. The quote is one of them, so a quoted string may also be part of an atom.
bool IsAtomCharacter(wchar_t c)
{
    return (c == L'\0' || !IsControl(c)) && std::wstring_view(L"()<>@,;:\\[] ").find(c) == kNotFound;
}

std::size_t AtomEnd(std::wstring_view text, std::size_t begin, bool withDots)
{
    std::size_t end = begin;
    while (end < text.size() && IsAtomCharacter(text[end]) && (withDots || text[end] != L'.'))
        ++end;
    return end;
}

// Returns the end of the quoted string at `begin`, or `begin` if there is none.
std::size_t QuotedEnd(std::wstring_view text, std::size_t begin)
{
    if (begin >= text.size() || text[begin] != L'"')
        return begin;
    const std::size_t quote = text.find(L'"', begin + 1);
    return quote == kNotFound ? begin : quote + 1;
}

// Returns true if at least two labels, with dots between them, reach from `begin` to the end of the text. A label is an
// atom or a quoted string. Where both are possible, either may fit, so all positions at which a label may begin are
// recorded.
bool IsDomain(std::wstring_view text, std::size_t begin)
{
    std::vector<bool> mayBegin(text.size() + 1, false);
    mayBegin[begin] = true;
    for (std::size_t label = begin; label < text.size(); ++label)
    {
        if (!mayBegin[label])
            continue;
        for (const std::size_t end : {AtomEnd(text, label, false), QuotedEnd(text, label)})
        {
            if (end == label)
                continue;
            if (end < text.size() && text[end] == L'.')
                mayBegin[end + 1] = true;
            else if (end == text.size() && label != begin)
                return true;
        }
    }
    return false;
}

} // namespace

WCValDList<clsParseItem> ParseAddressField(std::wstring_view field)
{
    return AddressFieldParser(field).Parse();
}

bool IsMailAddress(std::wstring_view text)
{
    for (const std::size_t end : {AtomEnd(text, 0, true), QuotedEnd(text, 0)})
        if (end > 0 && end < text.size() && text[end] == L'@' && IsDomain(text, end + 1))
            return true;
    return false;
}

TextBuffer DecodeMailDomain(std::wstring_view address)
{
    static constexpr std::wstring_view kInternational = L"xn--";
    const std::size_t at = address.find(L'@');
    if (at == kNotFound)
        return TextBuffer(address);
    TextBuffer result(address.substr(0, at + 1));
    for (std::size_t begin = at + 1;;)
    {
        const std::size_t end = std::min(address.find(L'.', begin), address.size());
        const std::wstring_view label = address.substr(begin, end - begin);
        std::optional<TextBuffer> decoded;
        if (label.starts_with(kInternational))
            decoded = DecodePunycode(label.substr(kInternational.size()));
        result += decoded ? std::wstring_view(*decoded) : label;
        if (end == address.size())
            return result;
        result.push_back(L'.');
        begin = end + 1;
    }
}

} // namespace qx
