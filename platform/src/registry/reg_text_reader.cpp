#include "registry/reg_text.h"

#include "base/text.h"

#include <windows.h>

#include <unicode/ustring.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace qxplatform
{

namespace
{

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";

bool IsBlank(char16_t c)
{
    return c == u' ' || c == u'\t';
}

bool IsLineEnd(char16_t c)
{
    return c == u'\r' || c == u'\n';
}

int HexDigit(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

void AppendBytes(std::vector<BYTE>& data, const void* bytes, std::size_t count)
{
    const auto first = static_cast<const BYTE*>(bytes);
    data.insert(data.end(), first, first + count);
}

// Returns false if a part of the bytes is invalid in their encoding; the rest is still converted.
bool Decode(std::string_view bytes, std::u16string& text)
{
    static_assert(std::endian::native == std::endian::little);
    if (bytes.starts_with("\xFF\xFE"))
    {
        bytes.remove_prefix(2);
        text.resize(bytes.size() / 2);
        std::memcpy(text.data(), bytes.data(), text.size() * 2);
        return bytes.size() % 2 == 0;
    }
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    text.resize(bytes.size());
    std::int32_t length = 0, substitutions = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(text.data(), static_cast<std::int32_t>(text.size()), &length, bytes.data(),
        static_cast<std::int32_t>(bytes.size()), 0xFFFD, &substitutions, &status);
    if (status > U_ZERO_ERROR) // warnings are negative
    {
        text.clear();
        return false;
    }
    text.resize(static_cast<std::size_t>(length));
    return substitutions == 0;
}

// Parses the text once from start to end. Malformed lines are skipped and recorded.
class Reader
{
public:
    Reader(std::u16string_view text, std::u16string_view rootName, RegistryText& result)
        : _text(text),
          _rootName(rootName),
          _result(result)
    {
    }

    void Run()
    {
        if (TakeRestOfLine() != kHeader)
        {
            _result.damaged = true;
            return;
        }
        while (!AtEnd())
        {
            SkipBlanks();
            const std::size_t start = _at;
            if (ReadEntry())
                continue;
            _result.damaged = true;
            // Skip the entry's first line only: an unterminated text may have consumed the following lines.
            _at = start;
            TakeRestOfLine();
        }
        _result.tree.comments = std::move(_comments);
    }

private:
    bool AtEnd() const { return _at >= _text.size(); }
    char16_t Peek() const { return AtEnd() ? u'\0' : _text[_at]; }
    bool AtLineEnd() const { return AtEnd() || IsLineEnd(_text[_at]); }

    void SkipBlanks()
    {
        while (!AtEnd() && IsBlank(_text[_at]))
            ++_at;
    }

    bool Take(char16_t c)
    {
        if (AtEnd() || _text[_at] != c)
            return false;
        ++_at;
        return true;
    }

    bool TakeWord(std::u16string_view word)
    {
        if (!EqualWithoutCase(_text.substr(_at, word.size()), word))
            return false;
        _at += word.size();
        return true;
    }

    // Returns the rest of the line without trailing blanks and advances to the next line.
    std::u16string_view TakeRestOfLine()
    {
        const std::size_t start = _at;
        while (!AtLineEnd())
            ++_at;
        std::u16string_view line = _text.substr(start, _at - start);
        Take(u'\r');
        Take(u'\n');
        while (!line.empty() && IsBlank(line.back()))
            line.remove_suffix(1);
        return line;
    }

    bool ReadEntry()
    {
        if (AtLineEnd())
        {
            TakeRestOfLine();
            return true;
        }
        switch (Peek())
        {
        case u';':
            _comments.emplace_back(TakeRestOfLine());
            return true;
        case u'[':
            return ReadKey();
        case u'"':
        case u'@':
            return ReadValue();
        default:
            return false;
        }
    }

    // Parses [HKEY_...\name\name], or with a minus before the name for a key to be deleted.
    bool ReadKey()
    {
        _key = nullptr; // values after a malformed key belong to no key
        std::u16string_view line = TakeRestOfLine();
        if (!line.ends_with(u']'))
            return false;
        line = line.substr(1, line.size() - 2);
        const bool remove = line.starts_with(u'-');
        line.remove_prefix(remove ? 1 : 0);
        if (!EqualWithoutCase(line.substr(0, _rootName.size()), _rootName))
            return false;
        line.remove_prefix(_rootName.size());
        KeyPath path;
        if (!line.empty() && (line.front() != u'\\' || AppendNames(path, line.substr(1)) != ERROR_SUCCESS))
            return false;
        RegistryKey& root = _result.tree.root;
        if (remove)
            return Remove(root, path);
        _key = &root.Ensure(path);
        TakeComments(_key->comments);
        return true;
    }

    static bool Remove(RegistryKey& root, KeyPath path)
    {
        if (path.empty())
            return false;
        const std::u16string name = FoldName(path.back());
        path.pop_back();
        if (RegistryKey* const parent = root.Find(path))
            parent->keys.erase(name);
        return true;
    }

    void TakeComments(CommentLines& target)
    {
        std::ranges::move(_comments, std::back_inserter(target));
        _comments.clear();
    }

    // Parses "name"=data or @=data.
    bool ReadValue()
    {
        std::u16string name;
        if (!Take(u'@') && (!ReadQuoted(name) || name.size() > kMaxValueName))
            return false;
        SkipBlanks();
        if (!Take(u'='))
            return false;
        SkipBlanks();
        const bool remove = Take(u'-');
        RegistryValue value;
        if (!remove && !ReadData(value))
            return false;
        SkipBlanks();
        const std::u16string_view rest = TakeRestOfLine();
        if ((!rest.empty() && rest.front() != u';') || _key == nullptr)
            return false;
        if (!rest.empty())
            _comments.emplace_back(rest);
        if (remove)
        {
            _key->values.erase(FoldName(name));
            return true;
        }
        RegistryValue& target = _key->EnsureValue(name);
        target.type = value.type;
        target.data = std::move(value.data);
        TakeComments(target.comments);
        return true;
    }

    // Parses a quoted text, which may contain line ends, as the system's editor writes them.
    bool ReadQuoted(std::u16string& text)
    {
        ++_at;
        while (!AtEnd())
        {
            char16_t c = _text[_at++];
            if (c == u'"')
                return true;
            if (c == u'\\')
            {
                c = Peek();
                if (c != u'\\' && c != u'"')
                    return false;
                ++_at;
            }
            text += c;
        }
        return false;
    }

    bool ReadData(RegistryValue& value)
    {
        if (Peek() == u'"')
        {
            std::u16string text;
            if (!ReadQuoted(text))
                return false;
            value.type = REG_SZ;
            AppendBytes(value.data, text.c_str(), (text.size() + 1) * sizeof(char16_t));
            return true;
        }
        if (TakeWord(u"dword:"))
        {
            value.type = REG_DWORD;
            DWORD number = 0;
            if (!ReadHexNumber(number))
                return false;
            AppendBytes(value.data, &number, sizeof(number));
            return true;
        }
        if (!TakeWord(u"hex"))
            return false;
        value.type = REG_BINARY;
        if (Take(u'(') && !(ReadHexNumber(value.type) && Take(u')')))
            return false;
        return Take(u':') && ReadHexBytes(value.data);
    }

    bool ReadHexNumber(DWORD& number)
    {
        number = 0;
        std::size_t digits = 0;
        for (; HexDigit(Peek()) >= 0 && digits < 9; ++digits)
            number = number << 4 | static_cast<DWORD>(HexDigit(_text[_at++]));
        return digits >= 1 && digits <= 8;
    }

    // Parses bytes separated by commas; a backslash at the end of a line continues on the next one.
    bool ReadHexBytes(std::vector<BYTE>& data)
    {
        for (;;)
        {
            if (!SkipContinuation())
                return false;
            const int high = HexDigit(Peek());
            if (high < 0)
                return true;
            ++_at;
            const int low = HexDigit(Peek());
            if (low >= 0)
                ++_at;
            data.push_back(static_cast<BYTE>(low >= 0 ? high << 4 | low : high));
            if (!SkipContinuation())
                return false;
            if (!Take(u','))
                return true;
        }
    }

    bool SkipContinuation()
    {
        SkipBlanks();
        while (Take(u'\\'))
        {
            SkipBlanks();
            if (!AtLineEnd())
                return false;
            Take(u'\r');
            Take(u'\n');
            SkipBlanks();
        }
        return true;
    }

    const std::u16string_view _text;
    const std::u16string_view _rootName;
    RegistryText& _result;
    std::size_t _at = 0;
    RegistryKey* _key = nullptr;
    CommentLines _comments; // comments waiting for the item they precede
};

} // namespace

RegistryText ReadRegistryText(std::string_view bytes, std::u16string_view rootName)
{
    RegistryText result;
    if (bytes.empty())
        return result;
    std::u16string text;
    if (bytes.size() > kMaxRegistryFile)
        result.damaged = true;
    else
    {
        result.damaged = !Decode(bytes, text);
        Reader(text, rootName, result).Run();
    }
    return result;
}

} // namespace qxplatform
