#include "docinfo/property_set.h"

#include "core/words.h"
#include "docinfo/document_file.h"
#include "docinfo/file_text.h"
#include "docinfo/storage.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace qx
{
namespace
{

constexpr std::size_t kHeaderSize = 28; // includes the number of sets
constexpr std::size_t kSetEntrySize = 20;
constexpr std::size_t kIdSize = 16;
constexpr std::size_t kPropertyEntrySize = 8;
constexpr std::uint16_t kByteOrder = 0xFFFE;

// {F29F85E0-4FF9-1068-AB91-08002B27B3D9} as it is stored.
constexpr std::uint8_t kSummaryId[kIdSize] = {
    0xE0, 0x85, 0x9F, 0xF2, 0xF9, 0x4F, 0x68, 0x10, 0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9};

enum Property : std::uint32_t
{
    kCodePage = 1,
    kTitle = 2,
    kSubject = 3,
    kAuthor = 4,
    kKeywords = 5,
    kComments = 6,
    kLastAuthor = 8,
    kCreated = 12,
    kLastSaved = 13,
    kPropertyEnd = 14 // others aren't read
};

constexpr std::uint16_t kUnicode = 1200;
constexpr std::uint64_t kMostTextBytes = 64 * 1024 * 1024; // a longer text is truncated

// Reads the summary information, a property set at the offset `begin` of the stream.
class SummaryInformation
{
public:
    SummaryInformation(FileWindow& stream, std::uint64_t begin) : _stream(stream), _begin(begin) {}

    // Reads the positions of the properties. Returns false if the set isn't in the stream.
    bool Locate()
    {
        const std::uint8_t* const head = _stream.At(_begin, 8);
        if (head == nullptr)
            return false;
        const std::uint32_t count = LittleEndian32(head + 4);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            const std::uint8_t* const entry =
                _stream.At(_begin + 8 + std::uint64_t{i} * kPropertyEntrySize, kPropertyEntrySize);
            if (entry == nullptr)
                break;
            const std::uint32_t id = LittleEndian32(entry);
            if (id < kPropertyEnd && _offsets[id] == 0) // if an id is repeated, its first entry is used
                _offsets[id] = _begin + LittleEndian32(entry + 4);
        }
        if (const std::uint8_t* const page = ValueOf(kCodePage, VT_I2, 2))
            _codePage = LittleEndian16(page);
        return true;
    }

    // Stores a text property. If it is missing or isn't completely in the stream, the field is unchanged.
    void TakeText(Property id, clsVariant& field)
    {
        if (const std::optional<String> text = TextOf(id))
            clsDocu::SetText(field, *text);
    }

    void TakeDate(Property id, SYSTEMTIME& field)
    {
        const std::uint8_t* const value = ValueOf(id, VT_FILETIME, 8);
        if (value == nullptr)
            return;
        const FILETIME time = {LittleEndian32(value), LittleEndian32(value + 4)};
        if (!FileTimeToSystemTime(&time, &field))
            field = kNoTime;
    }

private:
    std::optional<std::uint16_t> TypeOf(Property id)
    {
        const std::uint8_t* const type = _offsets[id] != 0 ? _stream.At(_offsets[id], 4) : nullptr;
        return type != nullptr ? std::optional(LittleEndian16(type)) : std::nullopt;
    }

    // Returns the bytes of a value of this type, or null.
    const std::uint8_t* ValueOf(Property id, std::uint16_t type, std::size_t size)
    {
        return TypeOf(id) == type ? _stream.At(_offsets[id] + 4, size) : nullptr;
    }

    std::optional<String> TextOf(Property id)
    {
        const std::optional<std::uint16_t> type = TypeOf(id);
        if (!type || *type == VT_EMPTY)
            return std::nullopt;
        switch (*type)
        {
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return NumberText(*type, _stream.At(_offsets[id] + 4, 2));
        case VT_I4:
        case VT_UI4:
        case VT_R4:
            return NumberText(*type, _stream.At(_offsets[id] + 4, 4));
        case VT_R8:
            return NumberText(*type, _stream.At(_offsets[id] + 4, 8));
        case VT_LPSTR:
            return CountedText(id, 1, String().CodePage());
        case VT_BSTR:
            return CountedText(id, 1, _codePage);
        case VT_LPWSTR:
            return CountedText(id, sizeof(wchar_t), kUnicode);
        default: // also vectors and arrays
            return String();
        }
    }

    static std::optional<String> NumberText(std::uint16_t type, const std::uint8_t* value)
    {
        if (value == nullptr)
            return std::nullopt;
        switch (type)
        {
        case VT_I2:
            return String(String::kFormatted, L"%d", static_cast<std::int16_t>(LittleEndian16(value)));
        case VT_I4:
            return String(String::kFormatted, L"%d", static_cast<std::int32_t>(LittleEndian32(value)));
        case VT_UI2:
            return String(String::kFormatted, L"%u", unsigned{LittleEndian16(value)});
        case VT_UI4:
            return String(String::kFormatted, L"%u", LittleEndian32(value));
        case VT_R4:
            return String(String::kFormatted, L"%g", double{std::bit_cast<float>(LittleEndian32(value))});
        case VT_R8:
            return String(String::kFormatted, L"%g",
                std::bit_cast<double>(LittleEndian32(value) | std::uint64_t{LittleEndian32(value + 4)} << 32));
        default:
            return String(LittleEndian16(value) != 0 ? L"true" : L"false");
        }
    }

    // Reads a text that follows its length. The length counts units of `unit` bytes.
    std::optional<String> CountedText(Property id, std::size_t unit, unsigned codePage)
    {
        const std::uint8_t* const length = _stream.At(_offsets[id] + 4, 4);
        if (length == nullptr)
            return std::nullopt;
        const std::uint64_t begin = _offsets[id] + 8;
        const std::uint64_t size = std::uint64_t{LittleEndian32(length)} * unit;
        if (begin + size > _stream.Size())
            return std::nullopt;
        const auto most = static_cast<std::size_t>(std::min(size, kMostTextBytes));
        if (_codePage == kUnicode || codePage == kUnicode)
            return WideTextOfBytes(ReadToZero(_stream, begin, most, sizeof(wchar_t)));
        const std::string bytes = ReadToZero(_stream, begin, most, 1);
        String text;
        text.SetCodePage(codePage);
        text.Assign(bytes.data(), 0, bytes.size());
        return text;
    }

    FileWindow& _stream;
    const std::uint64_t _begin;
    std::array<std::uint64_t, kPropertyEnd> _offsets = {}; // in the stream; 0 if there is no such property
    unsigned _codePage = String().CodePage();
};

// Returns the offset of the set in the stream.
std::optional<std::uint64_t> FindSummary(FileWindow& stream)
{
    const std::uint8_t* const header = stream.At(0, kHeaderSize);
    if (header == nullptr || LittleEndian16(header) != kByteOrder)
        return std::nullopt;
    const std::uint32_t count = LittleEndian32(header + 24);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::uint8_t* const entry = stream.At(kHeaderSize + std::uint64_t{i} * kSetEntrySize, kSetEntrySize);
        if (entry == nullptr)
            break;
        if (std::memcmp(entry, kSummaryId, kIdSize) == 0)
            return LittleEndian32(entry + kIdSize);
    }
    return std::nullopt;
}

} // namespace

int ReadPropertySet(clsDocu& record, const String& path)
{
    DocumentStorage storage(record);
    if (FAILED(storage.Open(path)))
        return -1;
    const clsAutoRelease<IStream*> stream = OpenStream(storage.Root(), L"\5SummaryInformation");
    if (!stream)
    {
        record.Remark(L"no summary information");
        return -1;
    }
    clsDocFile file(stream.Get());
    FileWindow window(file);
    return ReadSummaryInformation(record, window);
}

int ReadSummaryInformation(clsDocu& record, FileWindow& stream)
{
    const std::optional<std::uint64_t> begin = FindSummary(stream);
    if (!begin)
    {
        record.Remark(L"no summary information");
        return -1;
    }
    SummaryInformation set(stream, *begin);
    if (!set.Locate())
    {
        record.Remark(L"damaged summary information");
        return -1;
    }
    set.TakeText(kTitle, record.Title);
    set.TakeText(kSubject, record.Subject);
    set.TakeText(kAuthor, record.Author);
    set.TakeText(kKeywords, record.Keywords);
    set.TakeText(kComments, record.Comments);
    set.TakeText(kLastAuthor, record.LastAuthor);
    set.TakeDate(kCreated, record.Created);
    set.TakeDate(kLastSaved, record.LastSaved);
    return 0;
}

} // namespace qx
