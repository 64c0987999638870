#include "core/system_values.h"

#include "core/system_calls.h"

namespace qx
{

namespace
{

std::atomic<HMODULE> libraryHandle = nullptr;
std::atomic<unsigned short> systemVersion = 0;
std::atomic<unsigned short> interfaceLanguage = 0;

} // namespace

unsigned AskDefaultCodePage()
{
    const unsigned codePage = GetACP();
    defaultCodePage.store(codePage, std::memory_order_relaxed);
    return codePage;
}

unsigned short SystemVersion()
{
    unsigned short known = systemVersion.load(std::memory_order_relaxed);
    if (known == 0)
    {
        const DWORD version = GetVersion();
        known = static_cast<unsigned short>((version & 0xFF) << 8 | (version >> 8 & 0xFF));
        systemVersion.store(known, std::memory_order_relaxed);
    }
    return known;
}

unsigned short InterfaceLanguage()
{
    unsigned short known = interfaceLanguage.load(std::memory_order_relaxed);
    if (known == 0)
    {
        known = UserInterfaceLanguage();
        interfaceLanguage.store(known, std::memory_order_relaxed);
    }
    return known;
}

HMODULE LibraryHandle()
{
    return libraryHandle.load(std::memory_order_relaxed);
}

void SetLibraryHandle(HMODULE handle)
{
    libraryHandle.store(handle, std::memory_order_relaxed);
}

} // namespace qx
