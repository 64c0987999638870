#include "docinfo/mail_words.h"

#include "core/charset/char_string.h"
#include "core/charset/charset_names.h"
#include "core/packing/base64.h"
#include "docinfo/text_scan.h"

namespace qx
{
namespace
{

bool IsWordCharacterASCII(wchar_t c)
{
    return IsLetterASCII(c) || IsDigitASCII(c) || c == L'_';
}

bool IsCharsetCharacter(wchar_t c)
{
    return IsWordCharacterASCII(c) || c == L'-';
}

template <class Test>
std::size_t SkipWhile(std::wstring_view text, std::size_t from, Test test)
{
    while (from < text.size() && test(text[from]))
        ++from;
    return from;
}

bool Continues(std::wstring_view text, std::size_t position, std::wstring_view with)
{
    return text.substr(position, with.size()) == with;
}

// Returns the value of a hexadecimal digit, or 0 for any other character.
unsigned HexValue(wchar_t c)
{
    const int value = HexDigit(c);
    return value < 0 ? 0 : static_cast<unsigned>(value);
}

String DecodeQ(std::wstring_view text, unsigned codePage)
{
    clsCHARString bytes;
    bytes.Reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == L'_')
            bytes.Append(' ');
        else if (text[i] != L'=')
            bytes.Append(static_cast<char>(text[i]));
        else if (text.size() - i < 3)
            break;
        else
        {
            bytes.Append(static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2])));
            i += 2;
        }
    }
    return bytes.ToString(codePage);
}

} // namespace

// Matches =\?([-\w]+)(?:\*\w+)?\?([QB])\?(.*?)\?= where the dot matches any character except a line feed.
std::optional<EncodedWord> EncodedWords::At(std::size_t position)
{
    if (position >= _header.size() || !Continues(_header, position, L"=?"))
        return std::nullopt;
    const std::size_t charset = position + 2;
    const std::size_t charsetEnd = SkipWhile(_header, charset, IsCharsetCharacter);
    if (charsetEnd == charset)
        return std::nullopt;
    std::size_t encoding = charsetEnd;
    if (Continues(_header, encoding, L"*"))
    {
        encoding = SkipWhile(_header, charsetEnd + 1, IsWordCharacterASCII);
        if (encoding == charsetEnd + 1)
            return std::nullopt;
    }
    if (!Continues(_header, encoding, L"?Q?") && !Continues(_header, encoding, L"?B?"))
        return std::nullopt;
    const std::size_t text = encoding + 3;
    const std::size_t textEnd = FindEnd(text);
    if (!Continues(_header, textEnd, L"?="))
        return std::nullopt;
    return EncodedWord{_header.substr(charset, charsetEnd - charset), _header[encoding + 1],
        _header.substr(text, textEnd - text), textEnd + 2 - position};
}

// Returns the position of the first "?=" or line feed, or the end of the header. The last result is cached, because a
// hostile header may have many beginnings of words before a single end.
std::size_t EncodedWords::FindEnd(std::size_t from)
{
    if (_isSearched && _searchedFrom <= from && from <= _end)
        return _end;
    _searchedFrom = from;
    _isSearched = true;
    for (_end = from; _end < _header.size(); ++_end)
        if (_header[_end] == L'\n' || Continues(_header, _end, L"?="))
            break;
    return _end;
}

String DecodeWord(const EncodedWord& word)
{
    const unsigned codePage = CharsetNameToCodePage(IString(String(word.charset)));
    return word.encoding == L'Q' ? DecodeQ(word.text, codePage) : Base64DecodeToText(String(word.text), codePage);
}

TextBuffer DecodeWords(std::wstring_view header)
{
    EncodedWords words(header);
    TextBuffer result;
    std::size_t done = 0;
    for (std::size_t at = header.find(L"=?"); at != kNotFound; at = header.find(L"=?", at))
    {
        const std::optional<EncodedWord> word = words.At(at);
        if (!word)
        {
            ++at;
            continue;
        }
        result += header.substr(done, at - done);
        result += DecodeWord(*word).View();
        at += word->length;
        done = at;
    }
    result += header.substr(done);
    return result;
}

} // namespace qx
