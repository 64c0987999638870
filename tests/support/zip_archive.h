// An archive taken apart by its records, for tests: each field stands where the format has it, or the test fails.
#pragma once

#include "zip/records.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <string>
#include <vector>

namespace qxtest
{

struct ZIPEntry
{
    qx::scZIPLocalHeader local{};
    qx::scZIPCentralHeader central{};
    std::string name;
    std::string comment;
    std::string content;
};

struct ZIPArchive
{
    std::vector<ZIPEntry> entries;
    std::string comment;

    const ZIPEntry* Find(const std::string& name) const
    {
        for (const ZIPEntry& entry : entries)
            if (entry.name == name)
                return &entry;
        return nullptr;
    }
};

// Packed records lie at any address, and no reference may be bound to their fields.
template <class Field>
Field FieldValue(Field field)
{
    return field;
}

// Walks over bytes; what would lie behind the end is a failure and comes out as zeros.
class ByteWalker
{
public:
    ByteWalker(const std::string& bytes, std::size_t position) : _bytes(bytes), _position(position) {}

    template <class Record>
    Record Take()
    {
        const std::string part = Take(sizeof(Record));
        Record record{};
        if (part.size() == sizeof record)
            std::memcpy(&record, part.data(), sizeof record);
        return record;
    }

    std::string Take(std::size_t count)
    {
        EXPECT_LE(_position + count, _bytes.size());
        const std::string part = _position <= _bytes.size() ? _bytes.substr(_position, count) : std::string();
        _position += count;
        return part;
    }

    std::size_t Position() const { return _position; }

private:
    const std::string& _bytes;
    std::size_t _position;
};

inline std::string Inflated(const std::string& data, std::size_t size)
{
    std::string content(size, '\0');
    char none = 0; // an address for a content of no bytes
    z_stream stream{};
    inflateInit2(&stream, -15);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(size == 0 ? &none : content.data());
    stream.avail_out = static_cast<uInt>(size);
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.total_out, size);
    EXPECT_EQ(stream.avail_in, 0u);
    inflateEnd(&stream);
    return content;
}

// Of an archive that is nothing but its members in order, the directory and the end record.
inline ZIPArchive TakeApart(const std::string& bytes)
{
    using namespace qx;
    ZIPArchive archive;
    ByteWalker members(bytes, 0);
    while (bytes.compare(members.Position(), 4, "PK\3\4") == 0)
    {
        ZIPEntry& entry = archive.entries.emplace_back();
        entry.central.localHeaderOffset = static_cast<std::uint32_t>(members.Position());
        entry.local = members.Take<scZIPLocalHeader>();
        entry.name = members.Take(entry.local.nameLength);
        const std::string data = members.Take(entry.local.compressedSize);
        EXPECT_EQ(FieldValue(entry.local.extraLength), 0);
        if (entry.local.method == zipMethodDeflate)
            entry.content = Inflated(data, entry.local.uncompressedSize);
        EXPECT_EQ(FieldValue(entry.local.crc),
            crc32(0, reinterpret_cast<const Bytef*>(entry.content.data()), static_cast<uInt>(entry.content.size())));
    }
    ByteWalker directory(bytes, members.Position());
    for (ZIPEntry& entry : archive.entries)
    {
        const std::uint32_t offset = entry.central.localHeaderOffset;
        entry.central = directory.Take<scZIPCentralHeader>();
        EXPECT_EQ(FieldValue(entry.central.signature), zipCentralSignature);
        EXPECT_EQ(FieldValue(entry.central.localHeaderOffset), offset);
        // From the version needed to the length of the extra field both headers hold the same.
        EXPECT_EQ(std::memcmp(&entry.central.versionNeeded, &entry.local.versionNeeded, 26), 0);
        EXPECT_EQ(directory.Take(entry.central.nameLength), entry.name);
        entry.comment = directory.Take(entry.central.commentLength);
    }
    const std::size_t endOffset = directory.Position();
    const auto end = directory.Take<scZIPEndRecord>();
    EXPECT_EQ(FieldValue(end.signature), zipEndSignature);
    EXPECT_EQ(FieldValue(end.entries), archive.entries.size());
    EXPECT_EQ(FieldValue(end.entriesOnDisk), archive.entries.size());
    EXPECT_EQ(FieldValue(end.directoryOffset), members.Position());
    EXPECT_EQ(FieldValue(end.directorySize), endOffset - members.Position());
    archive.comment = directory.Take(end.commentLength);
    EXPECT_EQ(directory.Position(), bytes.size());
    return archive;
}

} // namespace qxtest
