// qxdbghelp_reader IMAGE ADDRESS...: prints the symbols and lines of addresses. They are hexadecimal, as in the image's
// file.
#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <cstdlib>

namespace
{

constexpr DWORD64 kBase = 0x10000000;

template <class Function>
Function* Bind(const char* name)
{
    static const HMODULE library = LoadLibraryW(L"dbghelp");
    return reinterpret_cast<Function*>(GetProcAddress(library, name));
}

} // namespace

int main(int count, char** arguments)
{
    const auto initialize = Bind<decltype(SymInitialize)>("SymInitialize");
    const auto load = Bind<decltype(SymLoadModuleEx)>("SymLoadModuleEx");
    const auto findSymbol = Bind<decltype(SymGetSymFromAddr64)>("SymGetSymFromAddr64");
    const auto findLine = Bind<decltype(SymGetLineFromAddr64)>("SymGetLineFromAddr64");
    const auto describe = Bind<decltype(SymGetModuleInfo64)>("SymGetModuleInfo64");
    const auto cleanup = Bind<decltype(SymCleanup)>("SymCleanup");
    const HANDLE process = GetCurrentProcess();
    if (count < 2 || !initialize || !initialize(process, getenv("SYMBOL_FOLDERS"), FALSE) ||
        load(process, nullptr, arguments[1], nullptr, kBase, 0, nullptr, 0) != kBase)
        return 1;
    IMAGEHLP_MODULE64 info{};
    info.SizeOfStruct = sizeof info;
    describe(process, kBase, &info);
    std::printf("%d %s %s\n", info.SymType, info.ModuleName, info.LoadedPdbName);
    for (int index = 2; index < count; ++index)
    {
        const DWORD64 address = kBase + std::strtoull(arguments[index], nullptr, 16);
        alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + 4000] = {};
        auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLength = 4000;
        IMAGEHLP_LINE64 line{};
        line.SizeOfStruct = sizeof line;
        const bool hasSymbol = findSymbol(process, address, nullptr, &symbol) != FALSE;
        const bool hasLine = findLine(process, address, nullptr, &line) != FALSE;
        std::printf("%s\t%s:%u\n", hasSymbol ? symbol.Name : "??", hasLine ? line.FileName : "??", line.LineNumber);
    }
    return cleanup(process) ? 0 : 1;
}
