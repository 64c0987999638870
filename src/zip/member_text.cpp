#include "zip/member_text.h"

#include "core/debug_line.h"
#include "core/system_values.h"
#include "files/file_window.h"
#include "files/zlib_parameters.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

namespace qx
{
namespace
{

constexpr std::size_t kLongestText = 255; // limit of each variable field, in bytes
constexpr std::uint8_t kLowFlagFinalizer = 0x80;

// Far more than the properties of any document. A larger result is an attempt to exhaust memory.
constexpr std::size_t kMostTextBytes = 64 << 20;

// The central directory is usually in the same part of the file as the end record.
constexpr std::uint64_t kTailSize = 4096;
constexpr std::size_t kFirstInflated = 4096;

template <class Record>
bool ReadRecord(Record& record, FileWindow& file, std::uint64_t offset, std::uint32_t signature)
{
    const std::uint8_t* const bytes = file.At(offset, sizeof record);
    if (bytes == nullptr)
        return false;
    std::memcpy(&record, bytes, sizeof record);
    return record.signature == signature;
}

// Finds the central directory. Returns the number of its entries, or -1 if there is none.
int FindDirectory(IZIPTextReceiver& receiver, FileWindow& file, std::uint64_t& offset)
{
    const std::uint64_t size = static_cast<std::uint32_t>(file.Size());
    scZIPEndRecord end;
    if (size < sizeof end)
    {
        receiver.OnMessage(String(L"WRN: GetZIPFilenames: file has bad format (no finalizer)"));
        return -1;
    }
    const std::uint64_t tail = std::min(size, kTailSize);
    file.At(size - tail, static_cast<std::size_t>(tail));
    if (!ReadRecord(end, file, size - sizeof end, kZipEndSignature))
    {
        receiver.OnMessage(String(L"WRN: GetZIPFilenames: read error (no finalizer found)"));
        return -1;
    }
    if (!file.MoveTo(end.directoryOffset))
    {
        receiver.OnMessage(String(L"WRN: GetZIPFilenames: file has bad format (2)"));
        return -1;
    }
    offset = end.directoryOffset;
    return end.entriesOnDisk;
}

char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Compares names, ignoring case. Nearly all names are ASCII, which needs no conversion.
bool IsSameName(std::string_view name, std::string_view wanted)
{
    const std::string_view text = name.substr(0, name.find('\0'));
    if (std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; }))
        return std::equal(text.begin(), text.end(), wanted.begin(), wanted.end(),
            [](char a, char b) { return LowerCase(a) == LowerCase(b); });
    IString first, second;
    first.Assign(std::string(text).c_str());
    second.Assign(std::string(wanted).c_str());
    return first == second;
}

std::optional<ZIPTextKind> KindOf(std::string_view name)
{
    if (IsSameName(name, "meta.xml"))
        return ZIPTextKind::OpenDocument;
    if (IsSameName(name, "docProps/core.xml"))
        return ZIPTextKind::OfficeOpenXml;
    return std::nullopt;
}

} // namespace

void IZIPTextReceiver::OnMessage(const String& line)
{
    DebugLine(L"%s", line.Text());
}

clsZIPMember::clsZIPMember(IZIPTextReceiver& receiver, FileWindow& file, const scZIPCentralHeader& header)
    : _receiver(receiver)
{
    scZIPLocalRecord local;
    if (!ReadLocalRecord(local, header, file))
    {
        _receiver.OnMessage(String(L"ERR: bad ZIP FILE ENTRY"));
        return;
    }
    ReadData(file, local);
    scZIPDescriptor finalizer;
    if ((header.flags & kLowFlagFinalizer) != 0 &&
        !ReadFinalizer(finalizer, file, local.data + local.header.compressedSize))
        _receiver.OnMessage(String(L"bad finalizer!"));
}

String clsZIPMember::Text(unsigned codePage) const
{
    String text;
    text.SetCodePage(codePage == 0 || _isStored ? DefaultCodePage() : codePage);
    text.Assign(_bytes.data(), 0, _bytes.size());
    text.SetCodePage(DefaultCodePage());
    return text;
}

void clsZIPMember::ReadData(FileWindow& file, const scZIPLocalRecord& local)
{
    const std::uint32_t size = local.header.compressedSize;
    if (size == 0 || size > kMostTextBytes || static_cast<std::int32_t>(local.header.uncompressedSize) <= 0)
        return;
    const bool hasData = local.data + size <= file.Size();
    switch (local.header.method)
    {
    case kZipMethodStored:
        _isStored = true;
        if (!hasData)
            return;
        _bytes.resize(size);
        if (file.Read(local.data, _bytes.data(), size) != size)
            _bytes.clear();
        return;
    case kZipMethodDeflate:
        if (hasData)
            Inflate(file, local.data, size);
        return;
    default:
        _receiver.OnMessage(String(String::kFormatted, L"unknown compression method %d", local.header.method));
    }
}

// Decompresses the data. Truncated data and bytes after the data aren't failures.
void clsZIPMember::Inflate(FileWindow& file, std::uint64_t offset, std::uint32_t size)
{
    z_stream stream{};
    if (const int code = inflateInit2(&stream, kRawDeflateWindowBits); code != Z_OK)
    {
        _receiver.OnMessage(String(String::kFormatted, L"ERR: ZLIB init error '%d'", code));
        return;
    }
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, inflateEnd);
    std::size_t done = 0;
    int code = Z_OK;
    for (std::uint32_t left = size; left > 0 && code != Z_STREAM_END;)
    {
        const auto count = std::min<std::uint32_t>(left, FileWindow::kCapacity);
        const std::uint8_t* const input = file.At(offset, count);
        if (input == nullptr)
            return _bytes.clear();
        offset += count;
        left -= count;
        stream.next_in = const_cast<std::uint8_t*>(input);
        stream.avail_in = count;
        do
        {
            if (done == _bytes.size())
                _bytes.resize(std::min(std::max(2 * done, kFirstInflated), kMostTextBytes + 1));
            stream.next_out = reinterpret_cast<Bytef*>(_bytes.data() + done);
            stream.avail_out = static_cast<uInt>(_bytes.size() - done);
            code = inflate(&stream, Z_NO_FLUSH);
            done = _bytes.size() - stream.avail_out;
            if ((code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR) || done > kMostTextBytes)
                return _bytes.clear();
        } while (stream.avail_out == 0);
    }
    _bytes.resize(done);
}

int GetZIPFilenames(IZIPTextReceiver& receiver, FileWindow& file)
{
    scZIPCentralRecord record;
    for (int left = FindDirectory(receiver, file, record.next); left > 0; --left)
    {
        if (!ReadCentralRecord(record, file, record.next))
        {
            receiver.OnMessage(String(L"WRN: GetZIPFilenames: file has bad format"));
            return -1;
        }
        const std::optional<ZIPTextKind> kind = KindOf(record.name);
        if (!kind)
            continue;
        const clsZIPMember member(receiver, file, record.header);
        if (const String text = member.Text(0); !text.IsEmpty())
            receiver.OnText(*kind, text, member);
        return 0;
    }
    return -1;
}

bool ReadCentralRecord(scZIPCentralRecord& record, FileWindow& file, std::uint64_t offset)
{
    scZIPCentralHeader& header = record.header;
    if (!ReadRecord(header, file, offset, kZipCentralSignature) || header.nameLength > kLongestText ||
        header.extraLength > kLongestText || header.commentLength > kLongestText)
        return false;
    const std::size_t size = sizeof header + header.nameLength + std::size_t{header.extraLength} + header.commentLength;
    record.next = offset + size;
    // Compared as 32-bit values, because documents are never larger than 2 GB. A record can't reach the end of the
    // file, because the end record follows the last one.
    if (static_cast<std::int32_t>(record.next) >= static_cast<std::int32_t>(file.Size()))
        return false;
    const std::uint8_t* const bytes = file.At(offset, size);
    if (bytes == nullptr)
        return false;
    record.name = {reinterpret_cast<const char*>(bytes + sizeof header), header.nameLength};
    return true;
}

bool ReadLocalRecord(scZIPLocalRecord& record, const scZIPCentralHeader& central, FileWindow& file)
{
    scZIPLocalHeader& header = record.header;
    const std::uint64_t name = std::uint64_t{central.localHeaderOffset} + sizeof header;
    if (!ReadRecord(header, file, central.localHeaderOffset, kZipLocalSignature) || header.nameLength > kLongestText ||
        name + header.nameLength >= file.Size())
        return false;
    record.data = name + header.nameLength + header.extraLength;
    if (record.data > file.Size())
        return false;
    if (header.flags & kZipFlagDescriptor)
    {
        header.compressedSize = central.compressedSize;
        header.uncompressedSize = central.uncompressedSize;
    }
    return true;
}

bool ReadFinalizer(scZIPDescriptor& buffer, FileWindow& file, std::uint64_t offset)
{
    DebugLine(L"file finalizer: %I64x %I64x", offset, file.Size());
    return ReadRecord(buffer, file, offset, kZipDescriptorSignature);
}

} // namespace qx
