// Finds the member of a document archive that contains the document's properties, and reads its text. Works on files
// and streams, and reads only the central directory and that member. Damaged archives yield an error code, never an
// exception. Each count and length is checked against the file size before it is used.
#pragma once

#include "core/text/string.h"
#include "zip/records.h"

#include <string>

namespace qx
{

class clsFile;

// Records as read, with their variable fields.
struct scZIPCentralRecord
{
    scZIPCentralHeader header{};
    std::string name;
    std::string extra;
    std::string comment;
};

struct scZIPLocalRecord
{
    scZIPLocalHeader header{};
    std::string name;
    std::string extra;
};

// Which of the two names the member has, and therefore how its text must be parsed.
enum class ZIPTextKind
{
    OpenDocument, // "meta.xml"
    OfficeOpenXml // "docProps/core.xml"
};

// Reads the text of the found member again, because its beginning may declare a code page other than the default one.
class clsZIPMemberReader
{
public:
    clsZIPMemberReader(clsFile& file, const scZIPCentralRecord& record) : _file(file), _record(record) {}

    String Read(unsigned codePage) const;

private:
    clsFile& _file;
    const scZIPCentralRecord& _record;
};

// Receives the text of the member.
class IZIPTextReceiver
{
public:
    virtual void OnText(ZIPTextKind kind, const String& text, const clsZIPMemberReader& reader) = 0;

protected:
    ~IZIPTextReceiver() = default;
};

// Searches the central directory, whose end record must be at the very end of the file, for the first member with one
// of the two names, ignoring case. Passes its text to the receiver unless it is empty. Returns 0, or -1 if the archive
// is damaged or contains neither name.
int GetZIPFilenames(IZIPTextReceiver& receiver, clsFile& file);

// The steps of GetZIPFilenames. Each starts at the file's current position. They return false if data are missing or a
// limit is exceeded.

// Name, extra field and comment are limited to 255 bytes each.
bool ReadCentralRecord(scZIPCentralRecord& record, clsFile& file);

// Seeks to the member. The name is limited to 255 bytes. If the sizes are stored after the data, they are taken from
// the central record.
bool ReadLocalRecord(scZIPLocalRecord& record, const scZIPCentralRecord& central, clsFile& file);

bool ReadFinalizer(scZIPDescriptor& buffer, clsFile& file);

// Returns the member's text, or an empty text on any failure. Code page 0 selects the default code page. The position
// doesn't change.
String ReadEntryText(clsFile& file, const scZIPCentralRecord& central, unsigned codePage);

} // namespace qx
