// Reading an arbitrary compound file as a message never fails in an undocumented way.
#include "docinfo/message.h"
#include "files/temp_files.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>

using namespace qx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const String path = MakeTempFile(nullptr, L"msg", L".tmp", nullptr);
    DeleteFileW(path.Text());
    const HANDLE file = CreateFileW(path.Text(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        std::abort();
    DWORD written = 0;
    WriteFile(file, data, static_cast<DWORD>(size), &written, nullptr);
    CloseHandle(file);
    const clsAutoRelease<clsDocu*> record = clsDocu::Create(path, nullptr, 0, 0);
    const int result = ReadMessage(*record, path);
    DeleteFileW(path.Text());
    if (result > 0)
        std::abort();
    for (const clsVariant* const text : {&record->Title, &record->Author, &record->LastAuthor})
        if (text->Type() != VT_EMPTY && text->Type() != VT_BSTR)
            std::abort();
    return 0;
}
