#include "docinfo/pdf.h"

#include "core/errors/exception.h"
#include "core/text/text_buffer.h"
#include "docinfo/document_dates.h"
#include "docinfo/pdf_table.h"
#include "docinfo/text_scan.h"
#include "locale/time_arithmetic.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace qx
{
namespace
{

constexpr std::size_t kTailSize = 50;
constexpr std::size_t kMostTables = 4096;
constexpr std::uint64_t kMostTableBytes = 16 * 1024 * 1024; // tables may share a trailer, which is parsed each time

// Returns the offset of the newest table, or 0.
std::uint64_t FindStart(FileWindow& file)
{
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), kTailSize));
    const std::uint8_t* const bytes = file.At(file.Size() - count, count);
    if (bytes == nullptr)
        return 0;
    std::string tail(bytes, bytes + count);
    std::replace(tail.begin(), tail.end(), '\0', ' ');
    static constexpr std::string_view kWord = "startxref";
    for (std::size_t at = tail.find(kWord); at != std::string::npos; at = tail.find(kWord, at + 1))
    {
        const std::size_t behind = at + kWord.size();
        PDFCursor cursor(std::string_view(tail).substr(behind));
        std::int64_t offset = 0;
        std::size_t digits = behind;
        while (digits < tail.size() && IsSpaceASCII(static_cast<unsigned char>(tail[digits])))
            ++digits;
        const bool hasDigits =
            digits > behind && digits < tail.size() && IsDigitASCII(static_cast<unsigned char>(tail[digits]));
        if (hasDigits && cursor.ReadNumber(offset))
            return static_cast<std::uint64_t>(offset);
    }
    return 0;
}

// Runs `parse` on the text at an offset and returns the number of parsed bytes. A syntax error becomes a remark of the
// record; everything parsed before it is kept.
template <class Parse>
std::size_t ParseAt(clsDocu& record, FileWindow& file, std::uint64_t offset, std::size_t count, Parse parse)
{
    const auto available = static_cast<std::size_t>(std::min<std::uint64_t>(count, file.Size() - offset));
    const std::uint8_t* const bytes = file.At(offset, available);
    if (bytes == nullptr)
        return 0;
    PDFCursor cursor(std::string_view(reinterpret_cast<const char*>(bytes), available));
    try
    {
        parse(cursor);
    }
    catch (clsException* thrown)
    {
        const std::unique_ptr<clsException> exception(thrown);
        record.Remark(L"EXCEPTION '%s'", exception->Errors().begin()->Text());
    }
    return cursor.Position();
}

// Follows the tables from the newest to the oldest, and returns the number of the information dictionary's object. If
// several trailers refer to such an object, the oldest one is used.
std::optional<std::uint32_t> ReadTables(clsDocu& record, FileWindow& file, PDFOffsets& offsets)
{
    std::optional<std::uint32_t> info;
    std::set<std::uint64_t> visited;
    std::uint64_t offset = FindStart(file);
    std::uint64_t parsed = 0;
    while (offset != 0 && offset < file.Size() && visited.size() < kMostTables &&
           parsed < kMostTableBytes + file.Size() && visited.insert(offset).second)
    {
        PDFDictionary trailer;
        parsed += ParseAt(record, file, offset, FileWindow::kCapacity,
            [&](PDFCursor& cursor) { ParseXRef(cursor, offsets, trailer); });
        offset = NumberOf(trailer.Find(L"Prev"));
        if (const clsVariant* const reference = trailer.Find(L"Info"))
        {
            const clsVariant first = (reference->Type() & VT_ARRAY) != 0 ? GetElement(*reference, {0}) : *reference;
            info = static_cast<std::uint32_t>(NumberOf(&first));
        }
    }
    return info;
}

void TakeInfo(clsDocu& record, const PDFDictionary& info)
{
    // Texts end at their first zero character, here and in SetText.
    const struct
    {
        const wchar_t* key;
        clsVariant& field;
    } texts[] = {
        {L"Author", record.Author},
        {L"Title", record.Title},
        {L"Subject", record.Subject},
        {L"Keywords", record.Keywords},
    };
    for (const auto& [key, field] : texts)
    {
        const clsVariant* const value = info.Find(key);
        clsDocu::SetText(field, value != nullptr ? ToString(*value) : String());
    }
    if (const clsVariant* const created = info.Find(L"CreationDate"))
        record.Created = ParsePDFDate(ToString(*created).Text());
    if (const clsVariant* const saved = info.Find(L"ModDate"))
        record.LastSaved = ParsePDFDate(ToString(*saved).Text());
}

} // namespace

int ReadPDF(clsDocu& record, FileWindow& file)
{
    PDFOffsets offsets;
    const std::optional<std::uint32_t> number = ReadTables(record, file, offsets);
    if (!number)
        return 0;
    const auto place = offsets.Find(*number, file.Size());
    if (!place || place->first >= file.Size())
        return 0;
    const std::uint64_t length = place->second - place->first;
    if (length > std::min<std::uint64_t>(FileWindow::kCapacity, file.Size()))
        return 0;
    PDFDictionary info;
    ParseAt(record, file, place->first, static_cast<std::size_t>(length),
        [&](PDFCursor& cursor) { cursor.ParseDictionary("obj", info); });
    if (!info.IsEmpty())
        TakeInfo(record, info);
    return 0;
}

SYSTEMTIME ParsePDFDate(std::wstring_view text)
{
    static constexpr std::wstring_view kRest = L"00000101000000Z00'00'";
    static constexpr std::wstring_view kForm = L"D:dddddddddddddd*dd'dd'";
    static constexpr std::array<std::size_t, 8> kWidths = {4, 2, 2, 2, 2, 2, 2, 2};
    TextBuffer whole(text);
    if (whole.size() >= 2 && whole.size() < kForm.size())
        whole += kRest.substr(kRest.size() - (kForm.size() - whole.size()));
    if (whole.size() < kForm.size())
        return kNoTime;
    TextBuffer digits;
    wchar_t sign = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i)
    {
        const wchar_t c = whole[i];
        const bool fits = kForm[i] == L'd'   ? IsDigitASCII(c)
                          : kForm[i] == L'*' ? c >= L'+' && c <= L'Z'
                                             : c == kForm[i];
        if (!fits)
            return kNoTime;
        if (kForm[i] == L'd')
            digits.push_back(c);
        else if (kForm[i] == L'*')
            sign = c;
    }
    std::array<unsigned, kWidths.size()> parts = {};
    std::size_t at = 0;
    for (std::size_t i = 0; i < parts.size(); ++i)
        for (std::size_t width = kWidths[i]; width > 0; --width)
            parts[i] = parts[i] * 10 + static_cast<unsigned>(digits[at++] - L'0');
    SYSTEMTIME date = DateOfParts(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
    const auto offset = static_cast<std::int64_t>(parts[6] * 60 + parts[7]);
    if (offset != 0)
        AddMinutes(date, sign == L'-' ? offset : -offset);
    return date;
}

} // namespace qx
