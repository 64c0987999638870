// Finds the one member of a document's archive that tells of the document, and reads its text. Works on a stream as on
// a file, and touches the central directory and that member only. What is damaged ends in a result, never in an
// exception; each count and length is held against the size of the file before anything is made of it.
#pragma once

#include "core/text/string.h"
#include "zip/records.h"

#include <string>

namespace qx
{

class clsFile;

// Records as they were read, and what stands behind them. A std::string has a zero byte behind its last one.
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

// By which of the two names the member was found, and so how its text is to be parsed.
enum class ZIPTextKind
{
    OpenDocument, // "meta.xml"
    OfficeOpenXml // "docProps/core.xml"
};

// Reads the text of the found member again: its own beginning may tell another code page than the default one.
class clsZIPMemberReader
{
public:
    clsZIPMemberReader(clsFile& file, const scZIPCentralRecord& record) : _file(file), _record(record) {}

    String Read(unsigned codePage) const;

private:
    clsFile& _file;
    const scZIPCentralRecord& _record;
};

// Takes the text of the member.
class IZIPTextReceiver
{
public:
    virtual void OnText(ZIPTextKind kind, const String& text, const clsZIPMemberReader& reader) = 0;

protected:
    ~IZIPTextReceiver() = default;
};

// Goes through the central directory, whose end record has to stand at the very end of the file, and hands the text of
// the first member that has one of the two names, in upper or lower case, to the receiver; an empty text isn't handed
// over. 0, or -1 if the archive isn't usable or has neither.
int GetZIPFilenames(IZIPTextReceiver& receiver, clsFile& file);

// The steps of that, each from the file's position on; false for what isn't there in full or breaks a limit.

// Name, extra field and comment have at most 255 bytes each.
bool ReadCentralRecord(scZIPCentralRecord& record, clsFile& file);

// Seeks to the member. The name has at most 255 bytes. Sizes that are told behind the data come from the central
// record.
bool ReadLocalRecord(scZIPLocalRecord& record, const scZIPCentralRecord& central, clsFile& file);

bool ReadFinalizer(scZIPDescriptor& buffer, clsFile& file);

// The member's text, in the default code page if that is 0; empty on any failure. The position stays.
String ReadEntryText(clsFile& file, const scZIPCentralRecord& central, unsigned codePage);

} // namespace qx
