// Reading an arbitrary WordPerfect document never fails in an undocumented way.
#include "docinfo/wordperfect.h"
#include "document_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxfuzz::ReadDocument(qx::ReadWordPerfect, data, size);
    return 0;
}
