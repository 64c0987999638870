// Damaged images with symbols and debug information, loaded into a session of the debug-help library: symbols, lines,
// variables with their types, and unwind rules at addresses all over the image.
//
// The input is an ELF file. The library reads it by its path, so it is written to a file in memory.
#include "dbghelp/debug_frame.h"
#include "dbghelp/sessions.h"

#include <windows.h>

#include <dbghelp.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

constexpr DWORD64 kBase = 0x10000000;
constexpr unsigned kAddresses = 64;
constexpr int kDeepestType = 8;

void QueryType(HANDLE process, ULONG type, int depth)
{
    for (const IMAGEHLP_SYMBOL_TYPE_INFO what : {TI_GET_SYMTAG, TI_GET_COUNT, TI_GET_BASETYPE, TI_GET_LENGTH})
    {
        ULONG64 value = 0;
        SymGetTypeInfo(process, kBase, type, what, &value);
    }
    ULONG inner = 0;
    if (depth < kDeepestType && SymGetTypeInfo(process, kBase, type, TI_GET_TYPE, &inner))
        QueryType(process, inner, depth + 1);
}

BOOL CALLBACK OnVariable(PSYMBOL_INFO symbol, ULONG, PVOID process)
{
    QueryType(process, symbol->TypeIndex, 0);
    return TRUE;
}

void QueryAddress(HANDLE process, DWORD64 address)
{
    alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + 200] = {};
    auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
    symbol.SizeOfStruct = sizeof symbol;
    symbol.MaxNameLength = 200;
    DWORD64 displacement = 0;
    if (SymGetSymFromAddr64(process, address, &displacement, &symbol))
    {
        char name[300];
        UnDecorateSymbolName(symbol.Name, name, sizeof name, 0);
    }
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD lineDisplacement = 0;
    if (SymGetLineFromAddr64(process, address, &lineDisplacement, &line))
        (void)std::string(line.FileName); // the whole name must be readable
    IMAGEHLP_STACK_FRAME frame{};
    frame.InstructionOffset = address;
    if (SymSetContext(process, &frame, nullptr))
        SymEnumSymbols(process, 0, nullptr, OnVariable, process);
    if (SymbolModule* const module = FindSession(process)->FindModule(address))
    {
        FrameRule rule;
        FindDebugFrameRule(*module, address, rule);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int file = memfd_create("image", MFD_CLOEXEC);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size))
        abort(); // the target would test nothing
    const HANDLE process = GetCurrentProcess();
    if (!SymInitialize(process, nullptr, FALSE))
        abort();
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (SymLoadModuleEx(process, nullptr, path.c_str(), "image", kBase, 0, nullptr, 0) != 0)
    {
        IMAGEHLP_MODULE64 info{};
        info.SizeOfStruct = sizeof info;
        // The image of a tiny file may claim any size; its functions are near its start.
        const DWORD64 imageSize =
            SymGetModuleInfo64(process, kBase, &info) && info.ImageSize < 0x10000 ? info.ImageSize : 0x10000;
        for (unsigned index = 0; index < kAddresses; ++index)
            QueryAddress(process, kBase + imageSize * index / kAddresses);
    }
    SymCleanup(process);
    close(file);
    return 0;
}
