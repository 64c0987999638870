// Reading an arbitrary JPEG file never fails in an undocumented way.
#include "docinfo/jpeg.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadJPEG, data, size);
    return 0;
}
