// Parses the records of an archive. If the records of a member disagree, the test fails.
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
    qx::scZIPCentralHeader header{};
    std::string name;
    std::string comment;
    std::string content;
};

// Packed records may be unaligned, so no reference may be bound to their fields.
template <class Field>
Field FieldValue(Field field)
{
    return field;
}

template <class Record>
Record RecordAt(const std::string& bytes, std::size_t position)
{
    const std::string part = bytes.substr(position, sizeof(Record));
    Record record{};
    EXPECT_EQ(part.size(), sizeof record);
    std::memcpy(&record, part.data(), part.size());
    return record;
}

inline std::string Inflated(const std::string& data, std::size_t size)
{
    std::string content(size + 1, '\0'); // provides an address even if there are no bytes
    z_stream stream{};
    inflateInit2(&stream, -15);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(content.data());
    stream.avail_out = static_cast<uInt>(content.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.total_out, size);
    EXPECT_EQ(stream.avail_in, 0u);
    inflateEnd(&stream);
    return content.substr(0, size);
}

// Returns the entries in the order of the directory.
inline std::vector<ZIPEntry> EntriesOf(const std::string& bytes)
{
    using namespace qx;
    const auto end = RecordAt<scZIPEndRecord>(bytes, bytes.rfind("PK\5\6"));
    std::size_t position = end.directoryOffset;
    const auto take = [&](std::size_t count)
    {
        position += count;
        return bytes.substr(position - count, count);
    };
    std::vector<ZIPEntry> entries(end.entries);
    for (ZIPEntry& entry : entries)
    {
        const auto header = entry.header = RecordAt<scZIPCentralHeader>(bytes, position);
        position += sizeof header;
        entry.name = take(header.nameLength);
        entry.comment = take(header.commentLength);
        const auto local = RecordAt<scZIPLocalHeader>(bytes, header.localHeaderOffset);
        // Both headers contain the same values from the version needed to the length of the extra field.
        EXPECT_EQ(std::memcmp(&header.versionNeeded, &local.versionNeeded, 26), 0);
        const std::size_t nameAt = header.localHeaderOffset + sizeof local;
        EXPECT_EQ(bytes.substr(nameAt, local.nameLength), entry.name);
        const std::string data = bytes.substr(nameAt + local.nameLength, local.compressedSize);
        entry.content = local.method == kZipMethodDeflate ? Inflated(data, local.uncompressedSize) : data;
        EXPECT_EQ(FieldValue(local.crc),
            crc32_z(0, reinterpret_cast<const Bytef*>(entry.content.data()), entry.content.size()));
    }
    EXPECT_EQ(position, std::size_t{end.directoryOffset} + end.directorySize);
    return entries;
}

} // namespace qxtest
