#include "docinfo/mail.h"

#include "docinfo/file_text.h"
#include "docinfo/mail_address.h"
#include "docinfo/mail_words.h"
#include "docinfo/text_scan.h"
#include "locale/machine_date.h"
#include "locale/time_arithmetic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace qx
{
namespace
{

constexpr std::wstring_view kLineEnd = L"\r\n";
// Most headers are shorter, and the rest of a file need not be read.
constexpr std::size_t kUsualHeaderSize = 8192;

struct EmptyLine
{
    std::size_t begin;
    std::size_t end;
};

// Finds the first \r\n\r\n, \r\r or \n\n in bytes or characters.
template <class Character>
std::optional<EmptyLine> FindEmptyLine(std::basic_string_view<Character> text)
{
    static constexpr Character kEmptyLine[] = {'\r', '\n', '\r', '\n'};
    static constexpr std::basic_string_view<Character> kLong(kEmptyLine, std::size(kEmptyLine));
    for (std::size_t at = 0; at + 1 < text.size(); ++at)
    {
        if (text[at] != '\r' && text[at] != '\n')
            continue;
        if (text[at + 1] == text[at])
            return EmptyLine{at, at + 2};
        if (text.substr(at, kLong.size()) == kLong)
            return EmptyLine{at, at + kLong.size()};
    }
    return std::nullopt;
}

// Reads the bytes of the file up to a zero byte, `most` bytes at most.
std::optional<std::string_view> ReadBytes(FileWindow& file, std::size_t most)
{
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), most));
    const auto* const bytes = reinterpret_cast<const char*>(file.At(0, count));
    if (bytes == nullptr)
        return std::nullopt;
    return std::string_view(bytes, count).substr(0, std::string_view(bytes, count).find('\0'));
}

// Converts no more text than necessary, usually up to the first empty line. In some code pages an incomplete character
// may swallow a line break, so only the converted text shows whether the line is empty.
String ReadHeader(FileWindow& file)
{
    for (const std::size_t most : {kUsualHeaderSize, FileWindow::kCapacity})
    {
        const std::optional<std::string_view> bytes = ReadBytes(file, most);
        if (!bytes)
            break;
        const auto emptyLine = FindEmptyLine(*bytes);
        if (!emptyLine)
            continue;
        for (const std::size_t end : {emptyLine->end, bytes->size()})
        {
            const String text = TextOfBytes(reinterpret_cast<const std::uint8_t*>(bytes->data()), end);
            if (const auto header = FindMailHeader(text.View()))
                return String(*header);
        }
    }
    return String();
}

// Joins folded lines and removes the first character of each continuation line.
TextBuffer Unfold(std::wstring_view header)
{
    TextBuffer result;
    std::size_t done = 0;
    for (std::size_t at = header.find(kLineEnd); at != kNotFound; at = header.find(kLineEnd, at))
    {
        const std::size_t next = at + kLineEnd.size();
        if (next < header.size() && IsSpaceASCII(header[next]))
        {
            result += header.substr(done, at - done);
            done = next + 1;
            at = done;
        }
        else
            at = next;
    }
    result += header.substr(done);
    return result;
}

bool IsEqualIgnoringCase(std::wstring_view text, std::wstring_view lowerCase)
{
    return text.size() == lowerCase.size() && StandsAt(text, 0, lowerCase);
}

// Stores a date. If a number is out of range, the record's date is unchanged. If the numbers are in range but the date
// doesn't exist, the record's date becomes unset.
void TakeDate(clsDocu& record, std::wstring_view value)
{
    RFC822Date date;
    if (!FindRFC822Date(value, date))
        return;
    SYSTEMTIME time = date.written;
    if (time.wMonth < 1 || time.wMonth > 12 || time.wDay < 1 || time.wDay > 31 || time.wHour > 24 ||
        time.wMinute > 59 || time.wSecond > 59)
        return;
    AddMinutes(time, date.minutesToUTC.value_or(0));
    record.Created = time;
}

// Stores the field of a line "Name: value", which matches the pattern ^(.+?): (.*)$ with a line feed only as its last
// character. All other lines are ignored. If several fields have the same name, the last one is used.
void TakeLine(clsDocu& record, std::wstring_view line)
{
    const std::size_t end = std::min(line.find(L'\n'), line.size());
    const std::size_t nameEnd = line.substr(0, end).find(L": ", 1);
    if (nameEnd == kNotFound || end + 1 < line.size())
        return;
    const std::wstring_view name = line.substr(0, nameEnd);
    const std::wstring_view value = line.substr(nameEnd + 2, end - nameEnd - 2);
    const auto text = [&](clsVariant& field)
    {
        clsDocu::SetText(field, String(std::wstring_view(DecodeMailField(value, name))));
    };
    if (IsEqualIgnoringCase(name, L"from"))
        text(record.Author);
    else if (IsEqualIgnoringCase(name, L"to"))
        text(record.LastAuthor);
    else if (IsEqualIgnoringCase(name, L"subject"))
        text(record.Title);
    else if (IsEqualIgnoringCase(name, L"date"))
        TakeDate(record, value);
}

} // namespace

std::optional<std::wstring_view> FindMailHeader(std::wstring_view text)
{
    const auto emptyLine = FindEmptyLine(text);
    return emptyLine ? std::optional(text.substr(0, emptyLine->begin)) : std::nullopt;
}

TextBuffer DecodeMailField(std::wstring_view value, std::wstring_view name)
{
    static constexpr std::wstring_view kAddressFields[] = {L"from", L"to", L"reply-to", L"return-path", L"cc", L"bcc"};
    if (std::none_of(std::begin(kAddressFields), std::end(kAddressFields),
            [=](std::wstring_view field) { return IsEqualIgnoringCase(name, field); }))
        return DecodeWords(value);
    TextBuffer text;
    for (const clsParseItem& item : ParseAddressField(value))
        text += item.text;
    return text;
}

int ReadMail(clsDocu& record, FileWindow& file)
{
    const TextBuffer header = Unfold(ReadHeader(file).View());
    for (std::size_t begin = 0; begin < header.size();)
    {
        const std::size_t end = std::min(header.find(kLineEnd, begin), header.size());
        TakeLine(record, std::wstring_view(header).substr(begin, end - begin));
        begin = end + kLineEnd.size();
    }
    return 0;
}

} // namespace qx
