// Builds archives in which each field of each record can be set to any value, for tests of what is accepted or refused.
#pragma once

#include "support/record_bytes.h"
#include "support/zlib_reference.h"
#include "zip/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qxtest
{

// A member in its usual form. Tests change what they need.
struct BuiltMember
{
    BuiltMember(std::string memberName, std::string memberContent, std::uint16_t method = qx::kZipMethodDeflate)
        : name(std::move(memberName)),
          data(method == qx::kZipMethodDeflate ? DeflatedByZlib(memberContent, 9, -15, 8, Z_DEFAULT_STRATEGY)
                                               : memberContent)
    {
        central.signature = qx::kZipCentralSignature;
        central.versionMadeBy = qx::kZipVersionMadeBy;
        central.versionNeeded = qx::kZipVersionNeeded;
        central.method = method;
        central.dosDate = 0x58EE; // 2024-07-14 12:34:56
        central.dosTime = 0x645C;
        central.crc = static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(memberContent.data()), static_cast<uInt>(memberContent.size())));
        central.compressedSize = static_cast<std::uint32_t>(data.size());
        central.uncompressedSize = static_cast<std::uint32_t>(memberContent.size());
    }

    // Stores sizes and checksum after the data instead of in the local header.
    BuiltMember& Streamed()
    {
        central.flags |= qx::kZipFlagDescriptor;
        return *this;
    }
    BuiltMember& Flags(unsigned flags)
    {
        central.flags = static_cast<std::uint16_t>(central.flags | flags);
        return *this;
    }
    BuiltMember& Extra(std::string bytes)
    {
        extra = std::move(bytes);
        return *this;
    }
    // Sets the mode of a file on Unix.
    BuiltMember& Mode(unsigned mode)
    {
        central.externalAttributes = mode << 16;
        central.versionMadeBy = 3 << 8 | 20;
        return *this;
    }

    // Returns a copy with a change.
    BuiltMember Changed(void (*change)(BuiltMember&)) const
    {
        BuiltMember changed = *this;
        change(changed);
        return changed;
    }

    std::string name;
    std::string data;
    std::string extra; // of the central record only
    std::string comment;
    qx::scZIPCentralHeader central{}; // without lengths and offset
};

inline std::string Build(const std::vector<BuiltMember>& members, const std::string& comment = {})
{
    using namespace qx;
    std::string bytes;
    std::string directory;
    for (const BuiltMember& member : members)
    {
        scZIPCentralHeader central = member.central;
        const bool isStreamed = (central.flags & kZipFlagDescriptor) != 0;
        scZIPLocalHeader local{kZipLocalSignature, central.versionNeeded, central.flags, central.method,
            central.dosTime, central.dosDate, central.crc, central.compressedSize, central.uncompressedSize,
            static_cast<std::uint16_t>(member.name.size()), 0};
        if (isStreamed)
            local.crc = local.compressedSize = local.uncompressedSize = 0;
        central.nameLength = local.nameLength;
        central.extraLength = static_cast<std::uint16_t>(member.extra.size());
        central.commentLength = static_cast<std::uint16_t>(member.comment.size());
        central.localHeaderOffset = static_cast<std::uint32_t>(bytes.size());
        bytes += BytesOfRecord(local) + member.name + member.data;
        if (isStreamed)
            bytes += BytesOfRecord(scZIPDescriptor{
                kZipDescriptorSignature, central.crc, central.compressedSize, central.uncompressedSize});
        directory += BytesOfRecord(central) + member.name + member.extra + member.comment;
    }
    scZIPEndRecord end{};
    end.signature = kZipEndSignature;
    end.entries = end.entriesOnDisk = static_cast<std::uint16_t>(members.size());
    end.directorySize = static_cast<std::uint32_t>(directory.size());
    end.directoryOffset = static_cast<std::uint32_t>(bytes.size());
    end.commentLength = static_cast<std::uint16_t>(comment.size());
    return bytes + directory + BytesOfRecord(end) + comment;
}

} // namespace qxtest
