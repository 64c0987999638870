// Reading an arbitrary PDF file never fails in an undocumented way.
#include "docinfo/pdf.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadPDF, data, size);
    return 0;
}
