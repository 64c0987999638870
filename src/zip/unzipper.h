// Extracts archives, using minizip.
#pragma once

#include "containers/slist.h"
#include "core/packing/byte_block.h"
#include "core/text/string.h"

#include <windows.h>

#include <cstdint>
#include <string>

namespace qx
{

class clsFile;
class clsZIPException;

// A member, as described in the central directory.
struct scZIPMember
{
    String name;
    bool isFolder = false;
    bool isLink = false;
    bool isEncrypted = false;
    unsigned method = 0;
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
    bool isZIP64 = false;
    bool hasOpenSize = false; // minizip doesn't know the size
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
    explicit Unzipper(const char* archivePath);
    Unzipper(const Unzipper&) = delete;
    Unzipper& operator=(const Unzipper&) = delete;
    ~Unzipper() { Close(); }

    bool IsOpen() const { return _archive != nullptr; }
    void Close();

    // Move to a member. Return false if there are no more members.
    bool First();
    bool Next();

    const scZIPMember& Member() const { return _member; }

    // Extracts the current member below a folder. Missing folders are created, including those in the member's name. An
    // existing file is replaced. The file gets the member's time but not its attributes: a read-only file would block
    // the next extraction, and modes of other systems mean nothing here.
    //
    // Nothing is written outside the folder. Names that lead out of it, members that are links, and names that pass
    // through an existing link are rejected. If extraction fails, the incomplete file is deleted.
    void Extract(const String& folder);

private:
    void ReadMember();
    String MakeFolders(const String& folder, const WCValSList<String>& parts, std::size_t count);
    void CheckMember() const;
    void ExtractFile(const String& path);
    void CopyData(clsFile& target);
    clsZIPException Damaged() const;

    void* _archive;          // minizip's handle
    std::uint64_t _left = 0; // number of members from the current one on
    scZIPMember _member;
    String _folderThere;       // the last folder that was found or created
    bool _isFolderNew = false; // created here, so it contains nothing but members
    std::string _name;
    std::string _extra;
    ByteBlock _buffer;
};

// Extracts a whole archive below a folder. Throws clsZIPException on failure; an empty archive is no failure.
void ExtractZip(const String& archive, const String& folder);

} // namespace qx
