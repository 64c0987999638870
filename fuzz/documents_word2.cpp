// Reading an arbitrary document of Word for Windows 2 never fails in an undocumented way.
#include "docinfo/word2.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadWord2, data, size);
    return 0;
}
