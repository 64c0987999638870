#include "markup/html_references.h"

#include "markup/html_characters.h"
#include "markup/html_reference_table.h"

#include <algorithm>
#include <cstdint>

namespace qx
{
namespace
{

constexpr std::size_t kRowCount = std::size(kHtmlReferenceRows);
constexpr std::size_t kNamesLength = []
{
    std::size_t length = 0;
    for (const HtmlReferenceRow& row : kHtmlReferenceRows)
        length += row.name.size();
    return length;
}();

// The table without pointers, so that the loader has nothing to relocate.
struct CompactRow
{
    std::uint16_t nameStart;
    std::uint8_t nameLength;
    bool endsAnywhere;
    wchar_t first;
    wchar_t second;
};
struct CompactTable
{
    std::array<char, kNamesLength> names{};
    std::array<CompactRow, kRowCount> rows{};
    std::array<std::uint16_t, 129>
        rowsOfLetter{}; // index of the first row with that initial; the last element is the row count
};
constexpr CompactTable kReferences = []
{
    CompactTable table;
    std::size_t used = 0;
    std::size_t index = 0;
    for (const HtmlReferenceRow& row : kHtmlReferenceRows)
    {
        table.rows[index++] = {static_cast<std::uint16_t>(used), static_cast<std::uint8_t>(row.name.size()),
            row.endsAnywhere, row.first, row.second};
        for (const char c : row.name)
            table.names[used++] = c;
        for (auto letter = static_cast<std::size_t>(row.name[0]) + 1; letter < table.rowsOfLetter.size(); ++letter)
            table.rowsOfLetter[letter] = static_cast<std::uint16_t>(index);
    }
    return table;
}();

constexpr std::size_t kLongestReference = []
{
    std::size_t longest = 0;
    for (const HtmlReferenceRow& row : kHtmlReferenceRows)
        longest = std::max(longest, row.name.size());
    return longest;
}();
constexpr std::size_t kLongestOldReference = []
{
    std::size_t longest = 0;
    for (const HtmlReferenceRow& row : kHtmlReferenceRows)
        longest = row.endsAnywhere ? std::max(longest, row.name.size()) : longest;
    return longest;
}();

// The characters of code page 1252, which HTML substitutes for the numeric references 0x80 to 0x9F.
// clang-format off
constexpr wchar_t kC1Characters[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
// clang-format on

constexpr bool IsLetterOrDigit(wchar_t c)
{
    return IsHtmlDigit(c) || IsHtmlLetter(c);
}

constexpr int HexDigit(wchar_t c)
{
    if (IsHtmlDigit(c))
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

const CompactRow* FindReference(std::wstring_view name)
{
    if (name.empty() || name[0] >= kReferences.rowsOfLetter.size() - 1)
        return nullptr;
    const CompactRow* const end = kReferences.rows.data() + kReferences.rowsOfLetter[name[0] + 1u];
    const auto compare = [name](const CompactRow& row)
    {
        const char* const text = kReferences.names.data() + row.nameStart;
        const std::size_t common = std::min<std::size_t>(row.nameLength, name.size());
        for (std::size_t i = 0; i < common; ++i)
            if (static_cast<wchar_t>(text[i]) != name[i])
                return static_cast<wchar_t>(text[i]) < name[i] ? -1 : 1;
        return row.nameLength < name.size() ? -1 : row.nameLength > name.size();
    };
    const CompactRow* const found = std::lower_bound(kReferences.rows.data() + kReferences.rowsOfLetter[name[0]], end,
        name, [&](const CompactRow& row, std::wstring_view) { return compare(row) < 0; });
    return found != end && compare(*found) == 0 ? found : nullptr;
}

HtmlReference Resolve(const CompactRow& row, std::size_t length)
{
    return {length, {row.first, row.second}, row.second != 0 ? 2u : 1u};
}

HtmlReference ResolveCode(std::uint32_t code, std::size_t length)
{
    constexpr wchar_t kReplacement = 0xFFFD;
    if (code >= 0x80 && code <= 0x9F)
        code = kC1Characters[code - 0x80];
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        code = kReplacement;
    if (code < 0x10000)
        return {length, {static_cast<wchar_t>(code)}, 1};
    code -= 0x10000;
    return {length, {static_cast<wchar_t>(0xD800 + (code >> 10)), static_cast<wchar_t>(0xDC00 + (code & 0x3FF))}, 2};
}

// Reads a numeric reference; `text` begins with "&#".
HtmlReference ReadNumericReference(std::wstring_view text)
{
    std::size_t at = 2;
    const bool hexadecimal = at < text.size() && (text[at] == L'x' || text[at] == L'X');
    at += hexadecimal;
    const std::size_t digits = at;
    const std::uint32_t base = hexadecimal ? 16 : 10;
    std::uint32_t code = 0;
    for (; at < text.size(); ++at)
    {
        const int digit = HexDigit(text[at]);
        if (digit < 0 || static_cast<std::uint32_t>(digit) >= base)
            break;
        code = std::min<std::uint32_t>(code * base + static_cast<std::uint32_t>(digit), 0x110000);
    }
    if (at == digits)
        return {};
    if (at < text.size() && text[at] == L';')
        ++at;
    return ResolveCode(code, at);
}

} // namespace

HtmlReference ReadHtmlReference(std::wstring_view text, bool inAttribute)
{
    if (text.size() >= 2 && text[1] == L'#')
        return ReadNumericReference(text);

    // A name that ends with a semicolon covers the whole run of letters and digits, so it is the longest possible
    // match.
    std::size_t end = 1;
    while (end < text.size() && end <= kLongestReference && IsLetterOrDigit(text[end]))
        ++end;
    if (end < text.size() && text[end] == L';')
        if (const CompactRow* row = FindReference(text.substr(1, end - 1)))
            return Resolve(*row, end + 1);

    for (end = std::min(end, kLongestOldReference + 1); end > 2; --end)
    {
        const CompactRow* row = FindReference(text.substr(1, end - 1));
        if (!row || !row->endsAnywhere)
            continue;
        if (inAttribute && end < text.size() && (text[end] == L'=' || IsLetterOrDigit(text[end])))
            return {};
        return Resolve(*row, end);
    }
    return {};
}

} // namespace qx
