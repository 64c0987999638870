// Parses the values of PDF syntax (ISO 32000-1, 7.3) in the text of one object or table.
#pragma once

#include "containers/skip_list.h"
#include "containers/slist.h"
#include "core/text/string.h"
#include "core/variant/variant.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qx
{

// The entries of a dictionary. If a key has several entries, the first one is used. Strings and names are VT_BSTR,
// integers VT_UI4, flags VT_BOOL. An array is the text between its brackets. Several values in a row, such as the
// reference "12 0 R", are an array of variants. A nested dictionary is replaced with a placeholder text.
using PDFDictionary = WCValSkipListDict<String, clsVariant>;

// A parser with a position in the text. Syntax errors are thrown as clsException.
class PDFCursor
{
public:
    // The text ends at its first zero byte.
    explicit PDFCursor(std::string_view text) : _whole(text), _text(text.substr(0, text.find('\0'))) {}

    bool IsAtEnd() const { return _at >= _text.size(); }
    std::size_t Position() const { return _at; }
    bool StandsAt(std::string_view word) const { return _text.substr(_at).starts_with(word); }
    // Skips a word at the current position.
    void Skip(std::string_view word) { _at += word.size(); }
    void SkipSpace();
    // Moves past the next occurrence of a word. Returns false if there is none.
    bool SkipBehind(std::string_view word);
    // Skips `count` bytes, which may be zero bytes. Returns false if there are fewer.
    bool SkipBytes(std::uint64_t count);

    // Reads a decimal number that may follow white space and have a sign. The value is limited to the range of the
    // type. Returns false, and doesn't move, if there is no digit.
    bool ReadNumber(std::int64_t& value);
    // Returns the current character and moves past it. Returns 0 at the end.
    char Take() { return IsAtEnd() ? '\0' : _text[_at++]; }

    // Adds the entries of the next dictionary. With a keyword, uses the dictionary after the next occurrence of that
    // word.
    void ParseDictionary(const char* keyword, PDFDictionary& dictionary);

private:
    char Peek(std::size_t ahead = 0) const { return _at + ahead < _text.size() ? _text[_at + ahead] : '\0'; }
    void SkipComment();

    String ParseName();
    bool ParseValues(clsVariant& value);
    bool ParseValue(clsVariant& value);
    std::uint32_t ParseInteger();
    String ParseArray();
    String ParseLiteralString();
    String ParseHexString();
    bool ParseFlag();
    unsigned char TakeEscape();

    std::string_view _whole; // including everything after the zero byte
    std::string_view _text;
    std::size_t _at = 0;
    int _nesting = 0;
};

// Returns a value as a number from 0 to 9e15; 0 for null.
std::uint64_t NumberOf(const clsVariant* value);

} // namespace qx
