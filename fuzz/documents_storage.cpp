// Reading arbitrary bytes as the stream of a property set returns 0 or -1.
#include "docinfo/document_file.h"
#include "docinfo/property_set.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <cstdlib>

using namespace qx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    IStream* stream = nullptr;
    if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) != S_OK)
        std::abort();
    stream->Write(data, static_cast<ULONG>(size), nullptr);
    {
        clsDocFile file(stream);
        FileWindow window(file);
        const clsAutoRelease<clsDocu*> record = clsDocu::Create(String(L"fuzz"), nullptr, 0, 0);
        const int result = ReadSummaryInformation(*record, window);
        if (result != 0 && result != -1)
            std::abort();
    }
    stream->Release();
    return 0;
}
