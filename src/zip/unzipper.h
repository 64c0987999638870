// Reads archives: minizip walks the directory, and the data is read here.
#pragma once

#include "core/text/string.h"
#include "zip/archive_input.h"
#include "zip/member_data.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace qx
{

// A member, as described in the central directory.
struct scZIPMember
{
    String name;
    bool isFolder = false;
    bool isLink = false;
    bool isEncrypted = false;
    bool isFromPosix = false; // a backslash is part of the name
    unsigned method = 0;
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::uint32_t crc = 0;
    std::uint64_t headerOffset = 0;
    std::optional<std::uint32_t> mode; // permissions
    bool hasTime = false;
    FILETIME time{};
};

// An archive that is open for reading. A failure to open is reported by IsOpen, all others by clsZIPException.
//
//     for (bool more = unzipper.First(); more; more = unzipper.Next())
//         ... unzipper.Member() ...
class Unzipper
{
public:
    // There is no support for passwords, so encrypted members can't be read.
    explicit Unzipper(const String& archivePath);
    Unzipper(const Unzipper&) = delete;
    Unzipper& operator=(const Unzipper&) = delete;
    ~Unzipper() { Close(); }

    // Returns true if the file could be opened, even if it isn't an archive.
    bool IsFileOpen() const { return _input.IsOpen(); }
    bool IsOpen() const { return _archive != nullptr; }
    void Close();

    // Returns true for an archive that consists only of its end record, which minizip rejects.
    bool IsEmptyArchive();

    bool HasMembers() const;

    // Move to a member. Return false if there are no more members.
    bool First();
    bool Next();

    const scZIPMember& Member() const { return _member; }

    // Throws unless the current member is a file that can be decompressed.
    void CheckMember() const;

    // Passes the data of the current member to the sink. Throws if the data is damaged. Returns false if the sink does.
    bool CopyData(const std::function<bool(const unsigned char* bytes, std::size_t count)>& sink);

private:
    void ReadMember();
    std::uint64_t DataPosition();

    clsArchiveInput _input;
    void* _archive = nullptr;  // minizip's handle
    std::uint64_t _left = 0;   // number of members from the current one on
    std::uint64_t _prefix = 0; // bytes in front of the archive, as in programs that unpack themselves
    scZIPMember _member;
    std::string _name;
    std::string _extra;
};

} // namespace qx
