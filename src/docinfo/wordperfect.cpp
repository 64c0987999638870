#include "docinfo/wordperfect.h"

#include "core/words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace qx
{
namespace
{

constexpr std::size_t kPrefixSize = 512;
constexpr std::size_t kLeastIndexOffset = 16;
constexpr std::size_t kIndexEntrySize = 14; // the index begins with a head of the same size
constexpr std::uint8_t kIndexMark = 2;
constexpr std::uint8_t kExtendedSummary = 0x12;
constexpr std::size_t kRecordHeadSize = 6;

// Limits for damaged files, whose entries may refer to the same records repeatedly.
constexpr std::uint32_t kMostRecords = 100'000;
constexpr std::uint64_t kMostRecordBytes = 64 * 1024 * 1024;

clsVariant* FieldOfTag(clsDocu& record, std::uint16_t tag)
{
    switch (tag)
    {
    case 1:
        return &record.Comments;
    case 5:
        return &record.Author;
    case 17:
        return &record.Title;
    case 26:
        return &record.Keywords;
    case 46:
        return &record.Subject;
    case 48:
        return &record.LastAuthor;
    default:
        return nullptr;
    }
}

// The multinational characters of WordPerfect that exist in the OEM code page, with their bytes in that code page.
constexpr std::pair<std::uint16_t, std::uint8_t> kMultinational[] = {{0x126, 0x80}, {0x147, 0x81}, {0x129, 0x82},
    {0x11D, 0x83}, {0x11F, 0x84}, {0x121, 0x85}, {0x123, 0x86}, {0x127, 0x87}, {0x12B, 0x88}, {0x12D, 0x89},
    {0x12F, 0x8A}, {0x135, 0x8B}, {0x133, 0x8C}, {0x137, 0x8D}, {0x11E, 0x8E}, {0x122, 0x8F}, {0x128, 0x90},
    {0x125, 0x91}, {0x124, 0x92}, {0x13D, 0x93}, {0x13F, 0x94}, {0x141, 0x95}, {0x145, 0x96}, {0x149, 0x97},
    {0x14B, 0x98}, {0x13E, 0x99}, {0x146, 0x9A}, {0x11B, 0xA0}, {0x131, 0xA1}, {0x13B, 0xA2}, {0x143, 0xA3},
    {0x139, 0xA4}, {0x138, 0xA5}, {0x117, 0xE1}, {0x10E, 0xF8}};

// The bytes indexed by unit - 0x100; 0 for units that are dropped.
constexpr auto kMultinationalBytes = []
{
    std::array<char, 0x4C> bytes = {};
    for (const auto& [unit, byte] : kMultinational)
        bytes[unit - 0x100u] = static_cast<char>(byte);
    return bytes;
}();

void AppendUnit(std::string& text, std::uint16_t unit)
{
    constexpr std::uint16_t kHardReturn = 0xF90A;
    if (unit <= 0xFF)
        text += static_cast<char>(unit);
    else if (unit == kHardReturn)
        text += "\r\n";
    else if (unit - 0x100u < kMultinationalBytes.size() && kMultinationalBytes[unit - 0x100u] != 0)
        text += kMultinationalBytes[unit - 0x100u];
}

// Returns the system's OEM code page, or code page 437 if that is UTF-8, because the bytes of the table above aren't
// UTF-8.
unsigned PageOfWordPerfect()
{
    constexpr unsigned kUTF8 = 65001;
    constexpr unsigned kUsualPage = 437;
    const unsigned page = GetOEMCP();
    return page == kUTF8 ? kUsualPage : page;
}

// Returns the second of the two zero-terminated texts in a record; the first one is its label.
String ValueOfRecord(const std::uint8_t* at, std::size_t size)
{
    const std::uint8_t* const end = at + size / 2 * 2;
    while (at != end && LittleEndian16(at) != 0)
        at += 2;
    std::string bytes;
    if (at != end)
        for (at += 2; at != end && LittleEndian16(at) != 0; at += 2)
            AppendUnit(bytes, LittleEndian16(at));
    String text;
    text.SetCodePage(PageOfWordPerfect());
    text.Assign(bytes.data(), 0, bytes.size());
    return text;
}

class SummaryReader
{
public:
    SummaryReader(clsDocu& record, FileWindow& file) : _record(record), _file(file) {}

    // Reads the records of one entry of the index.
    void ReadEntry(std::uint64_t offset, std::uint32_t size)
    {
        for (std::uint64_t left = size; left > 0 && _recordsLeft > 0; --_recordsLeft)
        {
            const std::uint8_t* const head = _file.At(offset, kRecordHeadSize);
            const std::size_t length = head != nullptr ? LittleEndian16(head) : 0;
            if (length < kRecordHeadSize)
                return;
            if (clsVariant* const field = FieldOfTag(_record, LittleEndian16(head + 2)))
                if (!ReadValue(*field, offset + kRecordHeadSize, length - kRecordHeadSize))
                    return;
            offset += length;
            left -= std::min<std::uint64_t>(left, length);
        }
    }

private:
    // Returns false if the record isn't completely in the file, or if enough has been read.
    bool ReadValue(clsVariant& field, std::uint64_t offset, std::size_t size)
    {
        const std::uint8_t* const bytes = size <= _bytesLeft ? _file.At(offset, size) : nullptr;
        if (bytes == nullptr)
            return false;
        _bytesLeft -= size;
        clsDocu::SetText(field, ValueOfRecord(bytes, size));
        return true;
    }

    clsDocu& _record;
    FileWindow& _file;
    std::uint32_t _recordsLeft = kMostRecords;
    std::uint64_t _bytesLeft = kMostRecordBytes;
};

// Returns the offset of the index, or 0 if the document can't be read.
std::uint64_t IndexOffset(clsDocu& record, FileWindow& file)
{
    const std::uint8_t* const prefix = file.At(0, kPrefixSize);
    if (prefix == nullptr || prefix[1] != 'W' || prefix[2] != 'P' || prefix[3] != 'C')
        record.Remark(L"no WordPerfect document");
    else if (LittleEndian16(prefix + 12) != 0)
        record.Remark(L"encrypted WordPerfect document");
    else if (prefix[10] != 2)
        record.Remark(L"WordPerfect document of major version %d", int{prefix[10]});
    else
        return std::max<std::size_t>(LittleEndian16(prefix + 14), kLeastIndexOffset);
    return 0;
}

} // namespace

int ReadWordPerfect(clsDocu& record, FileWindow& file)
{
    const std::uint64_t index = IndexOffset(record, file);
    const std::uint8_t* const head = index != 0 ? file.At(index, kIndexEntrySize) : nullptr;
    if (head == nullptr || head[0] != kIndexMark)
        return -1;
    const std::uint32_t count = LittleEndian16(head + 2); // including the head
    SummaryReader reader(record, file);
    bool isFound = false;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::uint8_t* const entry = file.At(index + std::uint64_t{i} * kIndexEntrySize, kIndexEntrySize);
        if (entry == nullptr || entry[1] != kExtendedSummary)
            continue;
        isFound = true;
        const std::uint32_t size = LittleEndian32(entry + 6);
        reader.ReadEntry(LittleEndian32(entry + 10), size);
    }
    return isFound ? 0 : -1;
}

} // namespace qx
