#include "zip/member_text.h"

#include "core/debug_line.h"
#include "core/system_values.h"
#include "files/deflate_stream.h"
#include "files/file.h"

#include <windows.h>

#include <objbase.h>

namespace qx
{
namespace
{

constexpr std::size_t kLongestText = 255; // limit of each variable field, in bytes
constexpr std::uint8_t kLowFlagFinalizer = 0x80;

// Far more than the properties of any document. A larger result is an attempt to exhaust memory.
constexpr std::int64_t kMostTextBytes = 64 << 20;

template <class Record>
bool ReadRecord(Record& record, clsFile& file, std::uint32_t signature)
{
    return file.Read(&record, sizeof record) == sizeof record && record.signature == signature;
}

bool ReadBytes(std::string& bytes, std::size_t count, clsFile& file)
{
    bytes.resize(count);
    return count == 0 || file.Read(bytes.data(), static_cast<std::uint32_t>(count)) == count;
}

// Returns true if the file has `count` more bytes.
bool HasBytes(clsFile& file, std::int64_t count)
{
    return file.Tell() + count <= file.GetSize();
}

String TextOf(const std::string& bytes, unsigned codePage)
{
    String text;
    text.SetCodePage(codePage == 0 ? DefaultCodePage() : codePage);
    text.Assign(bytes.data(), 0, bytes.size());
    text.SetCodePage(DefaultCodePage());
    return text;
}

String StoredText(clsFile& file, std::uint32_t size)
{
    std::string bytes;
    return HasBytes(file, size) && ReadBytes(bytes, size, file) ? TextOf(bytes, 0) : String();
}

String InflatedText(clsFile& file, std::uint32_t size, unsigned codePage)
{
    IStream* stream = nullptr;
    if (!HasBytes(file, size) || FAILED(CreateStreamOnHGlobal(nullptr, TRUE, &stream)))
        return String();
    clsFileRWTempStream inflated(stream);
    if (InflateStream(inflated, file, size, kMostTextBytes) < 0)
        return String();
    std::string bytes;
    inflated.Seek(0);
    return ReadBytes(bytes, static_cast<std::size_t>(inflated.GetSize()), inflated) ? TextOf(bytes, codePage)
                                                                                    : String();
}

// Reads the member's data, which start at the file's current position.
String TextOfMember(clsFile& file, const scZIPLocalHeader& header, unsigned codePage)
{
    if (header.compressedSize == 0 || header.compressedSize > kMostTextBytes ||
        static_cast<std::int32_t>(header.uncompressedSize) <= 0)
        return String();
    switch (header.method)
    {
    case kZipMethodStored:
        return StoredText(file, header.compressedSize);
    case kZipMethodDeflate:
        return InflatedText(file, header.compressedSize, codePage);
    default:
        DebugLine(L"unknown compression method %d", header.method);
        return String();
    }
}

// Moves to the central directory. Returns the number of its entries, or -1 if there is none.
int FindDirectory(clsFile& file)
{
    const auto size = static_cast<std::uint32_t>(file.GetSize());
    scZIPEndRecord end;
    if (size < sizeof end)
    {
        DebugLine(L"WRN: GetZIPFilenames: file has bad format (no finalizer)");
        return -1;
    }
    file.Seek(size - sizeof end);
    if (!ReadRecord(end, file, kZipEndSignature))
    {
        DebugLine(L"WRN: GetZIPFilenames: read error (no finalizer found)");
        return -1;
    }
    file.Seek(end.directoryOffset);
    if (file.Tell() != end.directoryOffset)
    {
        DebugLine(L"WRN: GetZIPFilenames: file has bad format (2)");
        return -1;
    }
    return end.entriesOnDisk;
}

void HandOver(IZIPTextReceiver& receiver, ZIPTextKind kind, clsFile& file, const scZIPCentralRecord& record)
{
    const clsZIPMemberReader reader(file, record);
    const String text = reader.Read(0);
    if (!text.IsEmpty())
        receiver.OnText(kind, text, reader);
}

} // namespace

String clsZIPMemberReader::Read(unsigned codePage) const
{
    return ReadEntryText(_file, _record, codePage);
}

int GetZIPFilenames(IZIPTextReceiver& receiver, clsFile& file)
{
    constexpr struct
    {
        const wchar_t* name;
        ZIPTextKind kind;
    } kWanted[] = {{L"meta.xml", ZIPTextKind::OpenDocument}, {L"docProps/core.xml", ZIPTextKind::OfficeOpenXml}};

    for (int left = FindDirectory(file); left > 0; --left)
    {
        scZIPCentralRecord record;
        if (!ReadCentralRecord(record, file))
        {
            DebugLine(L"WRN: GetZIPFilenames: file has bad format");
            return -1;
        }
        IString name;
        name.Assign(record.name.c_str());
        for (const auto& candidate : kWanted)
            if (name == candidate.name)
            {
                HandOver(receiver, candidate.kind, file, record);
                return 0;
            }
    }
    return -1;
}

bool ReadCentralRecord(scZIPCentralRecord& record, clsFile& file)
{
    const scZIPCentralHeader& header = record.header;
    if (!HasBytes(file, sizeof header) || !ReadRecord(record.header, file, kZipCentralSignature) ||
        header.nameLength > kLongestText || header.extraLength > kLongestText || header.commentLength > kLongestText)
        return false;
    const std::int64_t end = file.Tell() + header.nameLength + header.extraLength + header.commentLength;
    // Compared as 32-bit values; documents are never that large. The end record must follow the last entry.
    if (static_cast<std::int32_t>(end) >= static_cast<std::int32_t>(file.GetSize()))
        return false;
    return ReadBytes(record.name, header.nameLength, file) && ReadBytes(record.extra, header.extraLength, file) &&
           ReadBytes(record.comment, header.commentLength, file);
}

bool ReadLocalRecord(scZIPLocalRecord& record, const scZIPCentralRecord& central, clsFile& file)
{
    scZIPLocalHeader& header = record.header;
    file.Seek(central.header.localHeaderOffset);
    if (!HasBytes(file, sizeof header) || !ReadRecord(header, file, kZipLocalSignature) ||
        header.nameLength > kLongestText || !HasBytes(file, std::int64_t{header.nameLength} + 1))
        return false;
    if (!ReadBytes(record.name, header.nameLength, file) || !ReadBytes(record.extra, header.extraLength, file))
        return false;
    if (header.flags & kZipFlagDescriptor)
    {
        header.compressedSize = central.header.compressedSize;
        header.uncompressedSize = central.header.uncompressedSize;
    }
    return true;
}

bool ReadFinalizer(scZIPDescriptor& buffer, clsFile& file)
{
    DebugLine(L"file finalizer: %I64x %I64x", file.Tell(), file.GetSize());
    return HasBytes(file, sizeof buffer) && ReadRecord(buffer, file, kZipDescriptorSignature);
}

String ReadEntryText(clsFile& file, const scZIPCentralRecord& central, unsigned codePage)
{
    const std::int64_t position = file.Tell();
    String text;
    scZIPLocalRecord local;
    if (!ReadLocalRecord(local, central, file))
        DebugLine(L"ERR: bad ZIP FILE ENTRY");
    else
    {
        text = TextOfMember(file, local.header, codePage);
        scZIPDescriptor finalizer;
        if ((central.header.flags & kLowFlagFinalizer) != 0 && !ReadFinalizer(finalizer, file))
            DebugLine(L"bad finalizer!");
    }
    file.Seek(static_cast<std::uint32_t>(position));
    return text;
}

} // namespace qx
