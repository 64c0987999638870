#include "docinfo/tiff.h"

#include "core/text/text_buffer.h"
#include "core/words.h"
#include "docinfo/document_dates.h"
#include "docinfo/file_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <set>
#include <vector>

namespace qx
{
namespace
{

constexpr std::size_t kTiffHeaderSize = 8;
constexpr std::size_t kTiffEntrySize = 12;
constexpr std::uint16_t kVersion = 42;

// Limits for files whose directories refer to each other in circles.
constexpr std::size_t kMostDirectories = 4096;
constexpr int kMostExifNesting = 8;
constexpr std::uint64_t kMostBytes = 64 * 1024 * 1024;
constexpr std::size_t kLeastCost = 64; // bytes; counted for each read, even of bytes read before

constexpr std::size_t kTextPart = 4096;
constexpr std::uint64_t kLeastText = 4096; // room for a field of a small file

enum class Type : std::uint16_t
{
    Byte = 1,
    Ascii = 2,
    Short = 3,
    Long = 4,
    Rational = 5,
    SignedByte = 6,
    SignedShort = 8,
    SignedLong = 9,
    SignedRational = 10
};

enum class Tag : std::uint16_t
{
    ImageWidth = 256,
    ImageLength = 257,
    DocumentName = 269,
    ImageDescription = 270,
    Model = 272,
    DateTime = 306,
    Artist = 315,
    Copyright = 33432,
    ExposureTime = 33434,
    FNumber = 33437,
    ExifDirectory = 34665,
    DateTimeOriginal = 36867,
    SubjectDistance = 37382,
    UserComment = 37510
};

// A directory entry. `valueBytes` are the raw bytes of the value field, where short texts are stored in place.
struct Entry
{
    Tag tag;
    Type type;
    std::uint32_t count;
    std::uint32_t value; // the value, or its offset if it doesn't fit
    const std::uint8_t* valueBytes;
};

// A text field that grows piece by piece. It is stored in the record once, at the end. Many entries may share one text
// of the file, so the field never grows beyond `most` characters; pieces that don't fit are left out.
class GrowingText
{
public:
    GrowingText(clsVariant& field, std::uint64_t most) : _field(field), _text(ToString(field).View()), _most(most) {}
    GrowingText(const GrowingText&) = delete;
    GrowingText& operator=(const GrowingText&) = delete;
    ~GrowingText() = default;

    void Set(const String& text)
    {
        _text = text.View();
        _isChanged = true;
    }

    void Append(const String& text)
    {
        static constexpr std::wstring_view kSeparator = L", ";
        _isChanged = true;
        if (_text.size() + kSeparator.size() + text.Length() > _most)
            return;
        if (!_text.empty())
            _text += kSeparator;
        _text += text.View();
    }

    void Store()
    {
        if (_isChanged)
            clsDocu::SetText(_field, String(_text));
    }

private:
    clsVariant& _field;
    TextBuffer _text;
    const std::uint64_t _most;
    bool _isChanged = false;
};

// Matches "2001:02:03 04:05:06" at the beginning of the text.
std::optional<SYSTEMTIME> ParseDate(const String& text)
{
    static constexpr std::wstring_view kForm = L"dddd:dd:dd dd:dd:dd";
    if (text.Length() < kForm.size())
        return std::nullopt;
    std::array<unsigned, 6> parts = {};
    std::size_t part = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i)
    {
        const wchar_t c = text.CharAt(i);
        if (kForm[i] != L'd')
        {
            if (c != kForm[i])
                return std::nullopt;
            ++part;
            continue;
        }
        if (c < L'0' || c > L'9')
            return std::nullopt;
        parts[part] = parts[part] * 10 + static_cast<unsigned>(c - L'0');
    }
    return DateOfParts(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
}

class Reader
{
public:
    Reader(clsDocu& record, FileWindow& file, std::uint32_t base, bool isSwapped)
        : _record(record),
          _file(file),
          _base(base),
          _isSwapped(isSwapped),
          _author(record.Author, kLeastText + file.Size()),
          _comments(record.Comments, kLeastText + file.Size())
    {
    }

    // Reads the directories from the first one on.
    void ReadAll(std::uint32_t first)
    {
        std::uint32_t offset = first;
        do
            offset = ReadTIFFDirectory(std::uint64_t{_base} + offset, 0);
        while (_base == 0 && offset != 0);
        _author.Store();
        _comments.Store();
    }

private:
    std::uint16_t Word(const std::uint8_t* at) const { return _isSwapped ? BigEndian16(at) : LittleEndian16(at); }
    std::uint32_t Long(const std::uint8_t* at) const { return _isSwapped ? BigEndian32(at) : LittleEndian32(at); }

    // Returns the next directory's offset, relative to the base; 0 at the end and on failure.
    std::uint32_t ReadTIFFDirectory(std::uint64_t offset, int nesting)
    {
        if (offset == 0 || nesting > kMostExifNesting || _visited.size() >= kMostDirectories ||
            !_visited.insert(offset).second)
            return 0;
        std::uint8_t countBytes[2];
        if (ReadBytes(offset, countBytes, sizeof countBytes) != sizeof countBytes)
        {
            _record.Remark(_file.MoveTo(static_cast<std::int64_t>(offset)) ? L"read error directory count"
                                                                           : L"Seek error accessing TIFF directory");
            return 0;
        }
        const std::uint16_t count = Word(countBytes);
        std::vector<std::uint8_t> entries;
        if (!Reserve(entries, std::min<std::uint64_t>(count * kTiffEntrySize, BytesAfter(offset + sizeof countBytes))))
            return 0;
        const std::size_t whole = ReadBytes(offset + 2, entries.data(), entries.size()) / kTiffEntrySize;
        if (whole < count)
            _record.Remark(L"Could only read %u of %u entries in directory at offset %#I64x",
                static_cast<unsigned>(whole), static_cast<unsigned>(count), offset);
        std::uint8_t nextBytes[4];
        const bool hasNext = ReadBytes(offset + 2 + entries.size(), nextBytes, sizeof nextBytes) == sizeof nextBytes;
        ReadEntries(entries.data(), whole, nesting);
        return hasNext ? Long(nextBytes) : 0;
    }

    bool Reserve(std::vector<std::uint8_t>& entries, std::uint64_t size)
    try
    {
        entries.resize(static_cast<std::size_t>(size));
        return true;
    }
    catch (const std::bad_alloc&)
    {
        _record.Remark(L"No space for TIFF directory");
        return false;
    }

    void ReadEntries(const std::uint8_t* bytes, std::size_t count, int nesting)
    {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        for (const std::uint8_t* at = bytes; at < bytes + count * kTiffEntrySize; at += kTiffEntrySize)
        {
            const Entry entry = {
                static_cast<Tag>(Word(at)), static_cast<Type>(Word(at + 2)), Long(at + 4), Long(at + 8), at + 8};
            if (entry.tag == Tag::ImageWidth)
                width = ReadInteger(entry);
            else if (entry.tag == Tag::ImageLength)
                height = ReadInteger(entry);
            else
                TakeEntry(entry, nesting);
        }
        if (width != 0 && height != 0)
            _comments.Append(
                String(String::kFormatted, L"(%d * %d px)", static_cast<int>(width), static_cast<int>(height)));
    }

    void TakeEntry(const Entry& entry, int nesting)
    {
        switch (entry.tag)
        {
        case Tag::DocumentName:
            clsDocu::SetText(_record.Title, ReadASCII(entry));
            break;
        case Tag::ImageDescription:
            clsDocu::SetText(_record.Subject, ReadASCII(entry));
            break;
        case Tag::Model:
            _author.Append(ReadASCII(entry));
            break;
        case Tag::Artist:
            _author.Set(ReadASCII(entry));
            break;
        case Tag::Copyright:
            _comments.Set(ReadASCII(entry));
            break;
        case Tag::DateTime:
        case Tag::DateTimeOriginal:
            if (const auto date = ParseDate(ReadASCII(entry)))
                _record.Created = *date;
            break;
        case Tag::ExposureTime:
            if (const double time = ReadRational(entry); time > 0)
                _comments.Append(time >= 1 ? String(String::kFormatted, L"t=%.2g s", time)
                                           : String(String::kFormatted, L"t=1/%.0f s", 1 / time));
            break;
        case Tag::FNumber:
            if (const double number = ReadRational(entry); number > 0)
                _comments.Append(String(String::kFormatted, L"f=%.1g", number));
            break;
        case Tag::SubjectDistance:
            if (const double distance = ReadRational(entry); distance > 0)
                _comments.Append(String(String::kFormatted, L"d=%.3g m", distance));
            break;
        case Tag::UserComment:
            if (_record.Subject.Type() == VT_EMPTY || _record.Subject.Type() == VT_ERROR)
                clsDocu::SetText(_record.Subject, ReadASCII(entry));
            break;
        case Tag::ExifDirectory:
            // The EXIF directory of a document that is itself a TIFF file isn't read.
            if (_base != 0)
                ReadTIFFDirectory(std::uint64_t{_base} + ReadInteger(entry), nesting + 1);
            break;
        default:
            break;
        }
    }

    // Returns an integer value. Values shorter than four bytes are stored at the start of the value field.
    std::uint32_t ReadInteger(const Entry& entry) const
    {
        switch (entry.type)
        {
        case Type::Byte:
        case Type::SignedByte:
            return entry.valueBytes[0];
        case Type::Short:
        case Type::SignedShort:
            return Word(entry.valueBytes);
        case Type::Long:
        case Type::SignedLong:
            return entry.value;
        default:
            return 0;
        }
    }

    // Returns a text value. A text that extends past the end of the file is truncated.
    String ReadASCII(const Entry& entry)
    {
        constexpr std::uint32_t kInPlace = 4;
        if (entry.type != Type::Ascii)
            return String();
        if (entry.count <= kInPlace)
            return TextOfBytes(entry.valueBytes, entry.count);
        const std::uint64_t offset = std::uint64_t{_base} + entry.value;
        std::vector<std::uint8_t> bytes;
        std::uint64_t left = std::min<std::uint64_t>(entry.count, BytesAfter(offset));
        // Read in parts, because the text may end long before its count.
        while (left > 0)
        {
            const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, kTextPart));
            const std::size_t done = bytes.size();
            bytes.resize(done + wanted);
            const std::size_t read = ReadBytes(offset + done, bytes.data() + done, wanted);
            bytes.resize(done + read);
            const bool hasEnd = std::memchr(bytes.data() + done, 0, read) != nullptr;
            left = hasEnd || read < wanted ? 0 : left - read;
        }
        return TextOfBytes(bytes.data(), bytes.size());
    }

    // Returns the first value, or 0 if there is none.
    double ReadRational(const Entry& entry)
    {
        if (entry.type != Type::Rational && entry.type != Type::SignedRational)
        {
            _record.Remark(L"bad TIFF data type");
            return 0.0;
        }
        std::uint8_t bytes[8];
        if (entry.count == 0 || ReadBytes(std::uint64_t{_base} + entry.value, bytes, sizeof bytes) != sizeof bytes)
            return 0.0;
        const std::uint32_t numerator = Long(bytes);
        const std::uint32_t denominator = Long(bytes + 4);
        if (denominator == 0)
            return 0.0;
        if (entry.type == Type::Rational)
            return static_cast<double>(numerator) / denominator;
        return static_cast<double>(static_cast<std::int32_t>(numerator)) / static_cast<std::int32_t>(denominator);
    }

    std::uint64_t BytesAfter(std::uint64_t offset) { return offset < _file.Size() ? _file.Size() - offset : 0; }

    // Reads bytes until the total cost reaches kMostBytes. A read costs its size or the bytes that the window reads
    // from the file, whichever is larger, but at least kLeastCost.
    std::size_t ReadBytes(std::uint64_t offset, void* buffer, std::size_t count)
    {
        if (std::max(count, kLeastCost) > kMostBytes - std::min(_cost, kMostBytes))
            return 0;
        const std::uint64_t before = _file.BytesRead();
        const std::size_t read = _file.Read(offset, buffer, count);
        _cost += std::max<std::uint64_t>({count, kLeastCost, _file.BytesRead() - before});
        return read;
    }

    clsDocu& _record;
    FileWindow& _file;
    const std::uint32_t _base;
    const bool _isSwapped;
    GrowingText _author;
    GrowingText _comments;
    std::set<std::uint64_t> _visited; // offsets of the directories
    std::uint64_t _cost = 0;
};

} // namespace

int ReadTIFF(clsDocu& record, FileWindow& file, std::uint32_t base)
{
    constexpr std::uint16_t kBigEndian = 0x4D4D;
    constexpr std::uint16_t kLittleEndian = 0x4949;
    const std::uint8_t* const header = file.At(base, kTiffHeaderSize);
    if (header == nullptr)
    {
        record.Remark(L"error reading header");
        return -1;
    }
    const std::uint16_t order = LittleEndian16(header);
    if (order != kBigEndian && order != kLittleEndian)
    {
        record.Remark(L"Not a TIFF file, bad magic number %u (%#x)", unsigned{order}, unsigned{order});
        return -1;
    }
    const bool isSwapped = order == kBigEndian;
    const std::uint16_t version = isSwapped ? BigEndian16(header + 2) : LittleEndian16(header + 2);
    if (version != kVersion)
    {
        record.Remark(L"Not a TIFF file, bad version number %u (%#x)", unsigned{version}, unsigned{version});
        return -1;
    }
    const std::uint32_t first = isSwapped ? BigEndian32(header + 4) : LittleEndian32(header + 4);
    if (first != 0)
        Reader(record, file, base, isSwapped).ReadAll(first);
    return 0;
}

} // namespace qx
