// Parsing arbitrary text as the core properties of a document fills fields with parts of it.
#include "docinfo/file_text.h"
#include "docinfo/office_archive.h"
#include "docinfo/office_open_xml.h"
#include "document_fuzz.h"

using namespace qx;

namespace
{

int ReadCore(clsDocu& record, FileWindow& file)
{
    String text;
    if (!ReadFirstText(file, text))
        return 0;
    DeclaredEncoding(text.View());
    ParseOfficeOpenXml(record, text.View());
    for (const clsVariant* const field : {&record.Title, &record.Author, &record.Keywords, &record.Comments})
        if (field->Type() != VT_EMPTY && text.View().find(ToString(*field).View()) == std::wstring_view::npos)
            std::abort();
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(ReadCore, data, size);
    return 0;
}
