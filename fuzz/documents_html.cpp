// Reading an arbitrary web page never fails in an undocumented way.
#include "docinfo/html.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadHTML, data, size);
    return 0;
}
