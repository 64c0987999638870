// Reading an arbitrary TIFF file gives a result, whatever it contains.
#include "docinfo/tiff.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(
        [](qx::clsDocu& record, qx::FileWindow& file) { return qx::ReadTIFF(record, file, 0); }, data, size);
    return 0;
}
