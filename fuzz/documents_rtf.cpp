// Reading an arbitrary Rich Text file never fails in an undocumented way.
#include "docinfo/rtf.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadRTF, data, size);
    return 0;
}
