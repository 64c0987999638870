// Reading one member of arbitrary bytes must return a result, and must not succeed without a text.
#include "files/file.h"
#include "files/file_window.h"
#include "zip/member_text.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <cstdlib>

using namespace qx;

namespace
{

// Reads the member again, like a parser that has found another code page in it.
struct Receiver : IZIPTextReceiver
{
    void OnText(ZIPTextKind, const String& text, const clsZIPMember& member) override
    {
        if (text.IsEmpty())
            std::abort();
        member.Text(65001);
        wasCalled = true;
    }

    bool wasCalled = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    IStream* stream = nullptr;
    if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) != S_OK)
        std::abort();
    clsFileRWTempStream file(stream);
    file.clsFile::Write(data, size);
    Receiver receiver;
    FileWindow window(file);
    const int result = GetZIPFilenames(receiver, window);
    if (result > 0 || result < -1 || (result != 0 && receiver.wasCalled))
        std::abort();
    return 0;
}
