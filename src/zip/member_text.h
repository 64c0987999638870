// Finds the member of a document archive that contains the document's properties, and reads its text. Works on files
// and streams, and reads only the central directory and that member. Damaged archives yield an error code, never an
// exception. Each count and length is checked against the file size before it is used.
#pragma once

#include "core/text/string.h"
#include "zip/records.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qx
{

class FileWindow;

// Central and local records as parsed, with the offsets derived from them.
struct scZIPCentralRecord
{
    scZIPCentralHeader header{};
    std::string_view name;  // valid until the next bytes are read
    std::uint64_t next = 0; // the offset after the record
};

struct scZIPLocalRecord
{
    scZIPLocalHeader header{};
    std::uint64_t data = 0; // the offset of the member's data
};

// Which of the two names the member has, and therefore how its text must be parsed.
enum class ZIPTextKind
{
    OpenDocument, // "meta.xml"
    OfficeOpenXml // "docProps/core.xml"
};

class clsZIPMember;

class IZIPTextReceiver
{
public:
    // Receives the member and its text in the default code page. The text may declare another one.
    virtual void OnText(ZIPTextKind kind, const String& text, const clsZIPMember& member) = 0;
    // Receives a description of a fault in the archive. This implementation writes it to the debug output.
    virtual void OnMessage(const String& line);

protected:
    ~IZIPTextReceiver() = default;
};

// The contents of a member.
class clsZIPMember
{
public:
    // Reads the contents. They are empty on any failure.
    clsZIPMember(IZIPTextReceiver& receiver, FileWindow& file, const scZIPCentralHeader& header);

    // Returns the text up to the first zero byte. The code page applies to compressed members; 0 and members that are
    // stored select the default one.
    String Text(unsigned codePage) const;

private:
    void ReadData(FileWindow& file, const scZIPLocalRecord& local);
    void Inflate(FileWindow& file, std::uint64_t offset, std::uint32_t size);

    IZIPTextReceiver& _receiver;
    std::string _bytes;
    bool _isStored = false;
};

// Searches the central directory, whose end record must be at the very end of the file, for the first member with one
// of the two names, ignoring case. Passes its text to the receiver unless it is empty. Returns 0, or -1 if the archive
// is damaged or contains neither name.
int GetZIPFilenames(IZIPTextReceiver& receiver, FileWindow& file);

// The steps of GetZIPFilenames. They return false if data are missing or a limit is exceeded.

// Name, extra field and comment are limited to 255 bytes each.
bool ReadCentralRecord(scZIPCentralRecord& record, FileWindow& file, std::uint64_t offset);

// The name is limited to 255 bytes. If the sizes are stored after the data, they are taken from the central record.
bool ReadLocalRecord(scZIPLocalRecord& record, const scZIPCentralHeader& central, FileWindow& file);

bool ReadFinalizer(scZIPDescriptor& buffer, FileWindow& file, std::uint64_t offset);

} // namespace qx
