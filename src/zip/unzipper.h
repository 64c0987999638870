// Extracts archives through minizip.
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

// A member, as the central directory tells of it.
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
    bool hasOpenSize = false; // minizip doesn't know it
    bool hasTime = false;
    FILETIME time{};
};

// An archive that is open for reading. Failures but that of the opening are exceptions (clsZIPException).
//
//     for (bool more = unzipper.First(); more; more = unzipper.Next())
//         ... unzipper.Member() ...
class Unzipper
{
public:
    // Without a password encrypted members can't be read.
    explicit Unzipper(const char* archivePath);
    Unzipper(const Unzipper&) = delete;
    Unzipper& operator=(const Unzipper&) = delete;
    ~Unzipper() { Close(); }

    bool IsOpen() const { return _archive != nullptr; }
    void Close();

    // Goes to a member; false if there is none.
    bool First();
    bool Next();

    const scZIPMember& Member() const { return _member; }

    // Extracts the present member below a folder, which is made if it is missing, as are those that the member's name
    // asks for. A file that is there is replaced. It gets the member's time, but not its attributes: one that can't be
    // written would stand in the way of the next extraction, and modes of other systems mean nothing here.
    //
    // Nothing is written outside of the folder: names that lead out of it are refused, and so are members that are
    // links, and names that pass through a link that is there. A file that couldn't be extracted whole is removed.
    void Extract(const String& folder);

private:
    void ReadMember();
    String MakeFolders(const String& folder, const WCValSList<String>& parts, std::size_t count);
    void CheckMember() const;
    void ExtractFile(const String& path);
    void CopyData(clsFile& target);
    clsZIPException Damaged() const;

    void* _archive;          // minizip's handle
    std::uint64_t _left = 0; // members from the present one on
    scZIPMember _member;
    String _folderThere;       // the last one that was made or found
    bool _isFolderNew = false; // and made here, so that nothing but members can be in it
    std::string _name;
    std::string _extra;
    ByteBlock _buffer;
};

// Extracts all of an archive below a folder. Throws what its export is told to throw.
void ExtractZip(const String& archive, const String& folder);

} // namespace qx
