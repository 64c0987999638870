// Parsing arbitrary text as the core properties of a document fills fields with parts of it.
#include "docinfo/office_archive.h"
#include "docinfo/office_open_xml.h"
#include "document_fuzz.h"

using namespace qx;

namespace
{

void Parse(clsDocu& record, std::wstring_view text)
{
    DeclaredEncoding(text);
    ParseOfficeOpenXml(record, text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qxfuzz::ReadParts<Parse>, data, size);
    return 0;
}
