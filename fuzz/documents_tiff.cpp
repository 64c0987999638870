// Reading an arbitrary TIFF file never fails in an undocumented way.
#include "docinfo/tiff.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(
        [](qx::clsDocu& record, qx::FileWindow& file) { return qx::ReadTIFF(record, file, 0); }, data, size);
    return 0;
}
