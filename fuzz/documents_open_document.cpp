// Parsing arbitrary text as the properties of an OpenDocument file fills fields with parts of it.
#include "docinfo/file_text.h"
#include "docinfo/open_document.h"
#include "document_fuzz.h"

using namespace qx;

namespace
{

int ReadMeta(clsDocu& record, FileWindow& file)
{
    String text;
    if (!ReadFirstText(file, text))
        return 0;
    ParseOpenDocument(record, text.View());
    for (const clsVariant* const field : {&record.Title, &record.Author, &record.LastAuthor, &record.Comments})
        if (field->Type() != VT_EMPTY && text.View().find(ToString(*field).View()) == std::wstring_view::npos)
            std::abort();
    if (ToString(record.Keywords).Length() > text.Length())
        std::abort();
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(ReadMeta, data, size);
    return 0;
}
