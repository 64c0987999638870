#include "registry/reg_text.h"

#include <windows.h>

#include <cstring>

namespace qxplatform
{

namespace
{

constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr std::size_t kLastColumn = 76; // limit for the bytes in a line; a comma and a backslash may follow

class Writer
{
public:
    explicit Writer(std::u16string_view rootName) : _path(rootName) {}

    std::u16string Run(const RegistryTree& tree)
    {
        Line(u"Windows Registry Editor Version 5.00");
        Key(tree.root);
        if (!tree.comments.empty())
            _text += kLineEnd;
        Comments(tree.comments);
        return std::move(_text);
    }

private:
    void Line(std::u16string_view line)
    {
        _text += line;
        _text += kLineEnd;
    }

    void Comments(const CommentLines& lines)
    {
        for (const std::u16string& line : lines)
            Line(line);
    }

    // Writes a key and its subkeys. The recursion depth is limited by the depth of keys.
    void Key(const RegistryKey& key)
    {
        _text += kLineEnd;
        Comments(key.comments);
        _text += u'[';
        _text += _path;
        Line(u"]");
        for (const auto& entry : key.values)
            Value(entry.second);
        for (const auto& entry : key.keys)
        {
            const std::size_t length = _path.size();
            _path += u'\\';
            _path += entry.second->name;
            Key(*entry.second);
            _path.resize(length);
        }
    }

    void Value(const RegistryValue& value)
    {
        Comments(value.comments);
        _lineStart = _text.size();
        if (value.name.empty())
            _text += u'@';
        else
            Quoted(value.name);
        _text += u'=';
        std::u16string text;
        DWORD number = 0;
        if (value.type == REG_SZ && IsPlainText(value.data, text))
            Quoted(text);
        else if (value.type == REG_DWORD && value.data.size() == sizeof(number))
        {
            std::memcpy(&number, value.data.data(), sizeof(number));
            _text += u"dword:";
            HexNumber(number, 8);
        }
        else
            HexBytes(value);
        _text += kLineEnd;
    }

    void Quoted(std::u16string_view text)
    {
        _text += u'"';
        for (const char16_t c : text)
        {
            if (c == u'"' || c == u'\\')
                _text += u'\\';
            _text += c;
        }
        _text += u'"';
    }

    // Returns true if the data can be written as a quoted text: it must have exactly one terminator and no characters
    // that other programs treat as line ends.
    static bool IsPlainText(const std::vector<BYTE>& data, std::u16string& text)
    {
        if (data.size() < sizeof(char16_t) || data.size() % sizeof(char16_t) != 0)
            return false;
        text.resize(data.size() / sizeof(char16_t));
        std::memcpy(text.data(), data.data(), data.size());
        for (std::size_t i = 0; i + 1 < text.size(); ++i)
        {
            if (text[i] < u' ')
                return false;
        }
        const bool terminated = text.back() == 0;
        text.pop_back();
        return terminated;
    }

    void HexNumber(DWORD number, unsigned digits)
    {
        for (unsigned shift = digits * 4; shift != 0; shift -= 4)
            _text += u"0123456789abcdef"[number >> (shift - 4) & 0xF];
    }

    void HexBytes(const RegistryValue& value)
    {
        _text += u"hex";
        if (value.type != REG_BINARY)
        {
            unsigned digits = 1;
            while (digits < 8 && value.type >> (digits * 4) != 0)
                ++digits;
            _text += u'(';
            HexNumber(value.type, digits);
            _text += u')';
        }
        _text += u':';
        for (std::size_t i = 0; i < value.data.size(); ++i)
        {
            if (i != 0)
                _text += u',';
            if (_text.size() - _lineStart > kLastColumn)
            {
                Line(u"\\");
                _lineStart = _text.size();
                _text += u"  ";
            }
            HexNumber(value.data[i], 2);
        }
    }

    std::u16string _text;
    std::u16string _path;
    std::size_t _lineStart = 0;
};

} // namespace

std::string WriteRegistryText(const RegistryTree& tree, std::u16string_view rootName)
{
    const std::u16string text = Writer(rootName).Run(tree);
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    return bytes;
}

} // namespace qxplatform
