// Reading an arbitrary XML file as a document never fails in an undocumented way.
#include "docinfo/xml_document.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadXML, data, size);
    return 0;
}
