#include "docinfo/pdf_values.h"

#include "core/charset/utf8.h"
#include "core/errors/exception.h"
#include "core/text/text_buffer.h"
#include "docinfo/text_scan.h"

#include <algorithm>
#include <utility>

namespace qx
{
namespace
{

constexpr int kMostDictionaries = 100;

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool EndsName(char c)
{
    return c == '\0' || IsSpace(c) || std::string_view("()<>[]{}/%").find(c) != std::string_view::npos;
}

int DigitValue(char c)
{
    return HexDigit(static_cast<unsigned char>(c));
}

wchar_t Wide(char c)
{
    return static_cast<unsigned char>(c);
}

// Converts UTF-16 bytes to text.
String FromPairs(std::string_view bytes, bool isHighFirst)
{
    TextBuffer text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        text.push_back(
            static_cast<wchar_t>(Wide(bytes[i + (isHighFirst ? 0 : 1)]) << 8 | Wide(bytes[i + (isHighFirst ? 1 : 0)])));
    return String(std::wstring_view(text));
}

bool HasPairs(std::string_view bytes)
{
    return bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
}

String DecodePairs(std::string_view bytes)
{
    return FromPairs(bytes.substr(2), bytes[0] == '\xFE');
}

String OneCharacterPerByte(std::string_view bytes)
{
    TextBuffer text;
    text.reserve(bytes.size());
    std::transform(bytes.begin(), bytes.end(), std::back_inserter(text), Wide);
    return String(std::wstring_view(text));
}

clsVariant NumberVariant(std::uint32_t value)
{
    VARIANT number{};
    number.vt = VT_UI4;
    number.ulVal = value;
    return clsVariant::Adopt(number);
}

clsVariant FlagVariant(bool value)
{
    VARIANT flag{};
    flag.vt = VT_BOOL;
    flag.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return clsVariant::Adopt(flag);
}

} // namespace

void PDFCursor::SkipSpace()
{
    while (_at < _text.size() && IsSpace(_text[_at]))
        ++_at;
}

bool PDFCursor::SkipBehind(std::string_view word)
{
    const std::size_t found = _text.find(word, _at);
    if (found == std::string_view::npos)
        return false;
    _at = found + word.size();
    return true;
}

bool PDFCursor::SkipBytes(std::uint64_t count)
{
    if (count > _whole.size() - _at)
        return false;
    _at += static_cast<std::size_t>(count);
    _text = _whole.substr(0, _whole.find('\0', _at));
    return true;
}

bool PDFCursor::ReadNumber(std::int64_t& value)
{
    std::size_t at = _at;
    while (at < _text.size() && (IsSpace(_text[at]) || _text[at] == '\v' || _text[at] == '\f'))
        ++at;
    const bool isNegative = at < _text.size() && _text[at] == '-';
    if (isNegative || (at < _text.size() && _text[at] == '+'))
        ++at;
    const std::size_t digits = at;
    std::int64_t number = 0;
    for (; at < _text.size() && IsDigitASCII(Wide(_text[at])); ++at)
        number = number > (INT64_MAX - 9) / 10 ? INT64_MAX : number * 10 + (_text[at] - '0');
    if (at == digits)
        return false;
    value = isNegative ? -number : number;
    _at = at;
    return true;
}

// Skips a "%" and the rest of its line.
void PDFCursor::SkipComment()
{
    while (!IsAtEnd() && Peek() != '\r' && Peek() != '\n')
        ++_at;
}

void PDFCursor::ParseDictionary(const char* keyword, PDFDictionary& dictionary)
{
    if (keyword != nullptr && !SkipBehind(keyword))
        throw new clsException(L"no object");
    if (!SkipBehind("<<"))
        throw new clsException(L"object is not a dictionary");
    for (;;)
    {
        const String name = ParseName();
        clsVariant value;
        if (name.IsEmpty() || !ParseValues(value))
            break;
        dictionary.Insert(name, std::move(value));
    }
    if (!SkipBehind(">>"))
        throw new clsException(L"expected end of dictionary");
    SkipSpace();
}

// Returns the name at the current position, or an empty text if there is none.
String PDFCursor::ParseName()
{
    for (SkipSpace(); Peek() == '%'; SkipSpace())
        SkipComment();
    if (Peek() != '/')
        return String();
    ++_at;
    TextBuffer name;
    while (!EndsName(Peek()))
    {
        const int high = Peek() == '#' ? DigitValue(Peek(1)) : -1;
        const int low = high >= 0 ? DigitValue(Peek(2)) : -1;
        name.push_back(low >= 0 ? static_cast<wchar_t>(high << 4 | low) : Wide(Peek()));
        _at += low >= 0 ? 3 : 1;
    }
    return String(std::wstring_view(name));
}

// Returns false if there is no value before the end.
bool PDFCursor::ParseValues(clsVariant& value)
{
    WCValSList<clsVariant> values;
    SkipSpace();
    while (!IsAtEnd() && Peek() != '>' && (Peek() != '/' || values.IsEmpty()))
    {
        const bool isName = Peek() == '/';
        clsVariant next;
        if (ParseValue(next))
            values.Append(std::move(next));
        if (isName)
            break;
        SkipSpace();
        if (IsAtEnd())
            throw new clsException(L"premature end of dictionary");
    }
    if (values.IsEmpty())
        return false;
    if (values.Count() == 1)
        value = *values.begin();
    else
        value.SetArray(std::move(values));
    return true;
}

// Returns false if the text here was skipped: a comment, or anything that doesn't begin a value.
bool PDFCursor::ParseValue(clsVariant& value)
{
    const char c = Peek();
    if (c == '%')
        SkipComment();
    else if (c == '(')
        value = clsVariant(ParseLiteralString());
    else if (c == '/')
        value = clsVariant(ParseName());
    else if (StandsAt("<<"))
    {
        if (++_nesting > kMostDictionaries)
            throw new clsException(L"dictionaries are nested too deeply");
        PDFDictionary nested;
        ParseDictionary(nullptr, nested);
        --_nesting;
        value = clsVariant(String(L"<dummy:Dict>"));
    }
    else if (c == '<')
        value = clsVariant(ParseHexString());
    else if (c == '[')
        value = clsVariant(ParseArray());
    else if (c == 't' || c == 'f')
        value = FlagVariant(ParseFlag());
    else
    {
        std::int64_t number = 0;
        const bool mayBegin = IsDigitASCII(Wide(c)) || c == '+' || c == '-';
        if (mayBegin && ReadNumber(number))
            value = NumberVariant(static_cast<std::uint32_t>(
                static_cast<std::int32_t>(std::clamp<std::int64_t>(number, INT32_MIN, INT32_MAX))));
        else
            ++_at;
    }
    return value.Type() != VT_EMPTY;
}

bool PDFCursor::ParseFlag()
{
    for (const auto& [word, value] : {std::pair<std::string_view, bool>("true", true), {"false", false}})
        if (StandsAt(word))
        {
            Skip(word);
            return value;
        }
    throw new clsException(L"unexpected token");
}

String PDFCursor::ParseArray()
{
    ++_at;
    std::string text;
    while (!IsAtEnd() && Peek() != ']')
    {
        if (Peek() == '%')
            SkipComment();
        else
            text.push_back(Take());
    }
    Take();
    return OneCharacterPerByte(text);
}

// Parentheses may be nested. If the last closing parenthesis is missing, the string ends with the text.
String PDFCursor::ParseLiteralString()
{
    std::string bytes;
    ++_at;
    for (int depth = 1; !IsAtEnd();)
    {
        char c = Take();
        if (c == '\\')
            c = static_cast<char>(TakeEscape());
        else if (c == '(')
            ++depth;
        else if (c == ')' && --depth == 0)
            break;
        bytes.push_back(c);
    }
    if (HasPairs(bytes))
        return DecodePairs(bytes);
    std::erase(bytes, '\0');
    return OneCharacterPerByte(bytes);
}

// Parses the rest of an escape sequence and returns its character. Unknown sequences yield the backslash.
unsigned char PDFCursor::TakeEscape()
{
    static constexpr std::string_view kLetters = "()\\bfnrt", kCharacters = "()\\\b\f\n\r\t";
    const std::size_t letter = kLetters.find(Peek());
    if (!IsAtEnd() && letter != std::string_view::npos)
    {
        ++_at;
        return static_cast<unsigned char>(kCharacters[letter]);
    }
    constexpr int kMostDigits = 3;
    unsigned value = 0;
    int digits = 0;
    for (; digits < kMostDigits && Peek() >= '0' && Peek() <= '7'; ++digits)
        value = value * 8 + static_cast<unsigned>(Take() - '0');
    return static_cast<unsigned char>(digits > 0 ? value : '\\');
}

String PDFCursor::ParseHexString()
{
    std::string bytes;
    ++_at;
    int high = -1;
    for (;;)
    {
        SkipSpace();
        if (IsAtEnd())
            throw new clsException(L"premature end of object");
        const char c = Take();
        if (c == '>')
            break;
        const int digit = std::max(DigitValue(c), 0);
        if (high >= 0)
            bytes.push_back(static_cast<char>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    if (high >= 0)
        bytes.push_back(static_cast<char>(high << 4));
    if (HasPairs(bytes))
        return DecodePairs(bytes);
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kUtf8Mark))
        return DecodeUTF8(OneCharacterPerByte(std::string_view(bytes).substr(kUtf8Mark.size())));
    return OneCharacterPerByte(bytes);
}

std::uint64_t NumberOf(const clsVariant* value)
{
    constexpr double kMost = 9e15; // a double represents each whole number up to here exactly
    return value != nullptr ? static_cast<std::uint64_t>(std::clamp(ToDouble(*value), 0.0, kMost)) : 0;
}

} // namespace qx
