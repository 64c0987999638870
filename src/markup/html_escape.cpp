#include "markup/html_escape.h"

#include "core/text/characters.h"
#include "core/text/surrogates.h"
#include "markup/entities.h"
#include "markup/html_references.h"

#include <wchar.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace qx
{
namespace
{

// The replacement of each character; empty if the character stays.
constexpr auto kEscapes = []
{
    std::array<std::wstring_view, 256> escapes{};
    for (const HtmlEntity& entity : kHtmlEntities)
        escapes[entity.code] = entity.text;
    escapes[L'\t'] = L"&#09;";
    escapes[L'\''] = {};
    escapes[128] = {}; // the table contains the euro sign at its place in code page 1252; in this file it is U+20AC
    return escapes;
}();

// A numeric reference such as "&#x10ffff;", with at least four digits.
struct NumericReference
{
    explicit NumericReference(std::uint32_t code)
    {
        constexpr wchar_t kDigits[] = L"0123456789abcdef";
        int shift = code > 0xFFFFF ? 20 : code > 0xFFFF ? 16 : 12;
        for (; shift >= 0; shift -= 4)
            _text[_length++] = kDigits[code >> shift & 15];
        _text[_length++] = L';';
    }
    std::wstring_view Text() const { return {_text.data(), _length}; }

private:
    std::array<wchar_t, 10> _text{L'&', L'#', L'x'};
    std::size_t _length = 3;
};

// Calls write(view) for each piece of the result.
template <class Write>
void WriteEscaped(std::wstring_view text, Write write)
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const wchar_t c = text[i];
        if (c < kEscapes.size())
            write(kEscapes[c].empty() ? text.substr(i, 1) : kEscapes[c]);
        else if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            write(NumericReference(CodePointOf(c, text[++i])).Text());
        else if (IsHighSurrogate(c) || IsLowSurrogate(c))
            write(text.substr(i, 1));
        else
            write(NumericReference(c).Text());
    }
}

} // namespace

String EscapeHtml(std::wstring_view text)
{
    std::size_t length = 0;
    WriteEscaped(text, [&](std::wstring_view piece) { length += piece.size(); });
    String escaped;
    if (length == 0)
        return escaped;
    wchar_t* out = escaped.GetBuffer(length + 1);
    WriteEscaped(text, [&](std::wstring_view piece) { out = CopyCharacters(out, piece); });
    escaped.ReleaseBuffer(length);
    return escaped;
}

// The result fits in the length of the text, because no reference is shorter than the characters it represents.
String UnescapeHtml(std::wstring_view text, bool inAttribute)
{
    String unescaped;
    if (text.empty())
        return unescaped;
    wchar_t* const start = unescaped.GetBuffer(text.size() + 1);
    wchar_t* out = start;
    while (!text.empty())
    {
        const std::size_t plain = std::min(text.find(L'&'), text.size());
        out = CopyCharacters(out, text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const HtmlReference reference = ReadHtmlReference(text, inAttribute);
        out = CopyCharacters(out, reference.length != 0 ? reference.Units() : text.substr(0, 1));
        text.remove_prefix(std::max<std::size_t>(reference.length, 1));
    }
    unescaped.ReleaseBuffer(static_cast<std::size_t>(out - start));
    return unescaped;
}

} // namespace qx
