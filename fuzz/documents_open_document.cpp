// Parsing arbitrary text as the properties of an OpenDocument file fills fields with parts of it.
#include "docinfo/open_document.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qxfuzz::ReadParts<qx::ParseOpenDocument>, data, size);
    return 0;
}
