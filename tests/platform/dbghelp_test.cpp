// The debug-help library. All tests share one session, because opening one is slow on some systems.
#include "dbghelp_probe.h"
#include "frame_probe.h"
#include "stacks/context_registers.h"

#include <windows.h>

#include <dbghelp.h>
#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <tuple>

namespace
{

using testing::HasSubstr;

template <class Function>
Function* Bind(const char* name)
{
    static const HMODULE library = LoadLibraryW(L"dbghelp");
    return reinterpret_cast<Function*>(GetProcAddress(library, name));
}
#define DBGHELP(name) Bind<decltype(name)>(#name)

const char* FileNameOf(const char* path)
{
    return path + (std::string(path).find_last_of("/\\") + 1);
}

class DebugHelp : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_NE(DBGHELP(SymInitialize), nullptr);
        ASSERT_TRUE(DBGHELP(SymInitialize)(GetCurrentProcess(), nullptr, FALSE));
        DBGHELP(SymSetOptions)(SYMOPT_LOAD_LINES | SYMOPT_LOAD_ANYTHING);
        // The name that the enumeration passes needn't be a path.
        const auto load = [](PCSTR, DWORD64 base, ULONG size, PVOID) -> BOOL
        {
            char path[MAX_PATH] = {};
            GetModuleFileNameA(reinterpret_cast<HMODULE>(base), path, MAX_PATH);
            DBGHELP(SymLoadModuleEx)(GetCurrentProcess(), nullptr, path, FileNameOf(path), base, size, nullptr, 0);
            return TRUE;
        };
        ASSERT_TRUE(DBGHELP(EnumerateLoadedModules64)(GetCurrentProcess(), load, nullptr));
    }
    static void TearDownTestSuite()
    {
        EXPECT_TRUE(DBGHELP(SymCleanup)(GetCurrentProcess()));
        EXPECT_FALSE(DBGHELP(SymCleanup)(GetCurrentProcess()));
    }
};

// Walks the stack and appends the names of the functions to the text.
int TakeNames(void* text)
{
    CONTEXT context{};
    RtlCaptureContext(&context);
    STACKFRAME64 frame{};
    frame.AddrPC = {qx::ProgramCounterOf(context), 0, AddrModeFlat};
    frame.AddrFrame = frame.AddrStack = {qx::StackPointerOf(context), 0, AddrModeFlat};
    for (int depth = 0; depth < 8; ++depth)
    {
        if (!DBGHELP(StackWalk64)(qx::MachineOf<CONTEXT>(), GetCurrentProcess(), GetCurrentThread(), &frame, &context,
                nullptr, DBGHELP(SymFunctionTableAccess64), DBGHELP(SymGetModuleBase64), nullptr))
            break;
        alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + 500] = {};
        auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLength = 500;
        DWORD64 displacement = 0;
        if (DBGHELP(SymGetSymFromAddr64)(
                GetCurrentProcess(), frame.AddrPC.Offset - (depth > 0), &displacement, &symbol))
            *static_cast<std::string*>(text) += symbol.Name + std::string("\n");
    }
    return 1;
}

[[gnu::noinline]] void CallsTheFrameProbe(std::string& names)
{
    EXPECT_EQ(ProbeFrame(TakeNames, &names), 18);
}

// The unwind rules of the innermost function exist only in the debug information. Without them, the registers of its
// callers would be wrong too.
TEST_F(DebugHelp, WalksByDebugInformation)
{
    std::string names;
    CallsTheFrameProbe(names);
    EXPECT_THAT(names, testing::ContainsRegex("ProbeFrame\n.*CallsTheFrameProbe.*\n.*WalksByDebugInformation"));
}

TEST_F(DebugHelp, FindsModulesByAddress)
{
    const auto address = reinterpret_cast<DWORD64>(&ProbeNames);
    IMAGEHLP_MODULE64 info{};
    info.SizeOfStruct = sizeof info;
    ASSERT_TRUE(DBGHELP(SymGetModuleInfo64)(GetCurrentProcess(), address, &info));
    EXPECT_EQ(info.BaseOfImage, DBGHELP(SymGetModuleBase64)(GetCurrentProcess(), address));
    EXPECT_THAT(info.ModuleName, HasSubstr("qxdbghelp_probe"));
    EXPECT_EQ(info.SymType, SymDia);
    EXPECT_GT(info.ImageSize, address - info.BaseOfImage);
    EXPECT_FALSE(DBGHELP(SymGetModuleInfo64)(GetCurrentProcess(), 0x1000, &info));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
#if !defined(_WIN32) // the other implementation keeps the extension of names and accepts records of any size
    EXPECT_STREQ(info.ModuleName, "libqxdbghelp_probe");
    info.SizeOfStruct = 12;
    EXPECT_FALSE(DBGHELP(SymGetModuleInfo64)(GetCurrentProcess(), address, &info));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
#endif
}

TEST_F(DebugHelp, FindsLines)
{
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD displacement = 0;
    const auto address = reinterpret_cast<DWORD64>(&ProbeNames);
    ASSERT_TRUE(DBGHELP(SymGetLineFromAddr64)(GetCurrentProcess(), address, &displacement, &line));
    EXPECT_THAT(line.FileName, HasSubstr("dbghelp_probe.cpp"));
    EXPECT_EQ(line.LineNumber, 70u);
    EXPECT_EQ(displacement, 0u);
    EXPECT_EQ(line.Address, address);
}

#if !defined(_WIN32) // the other implementation forms different names

TEST_F(DebugHelp, NamesAreReadable)
{
    constexpr std::tuple<const char*, const char*, const char*> kCases[] = {{"main", "main", "main"},
        {"memcpy@@GLIBC_2.14", "memcpy", "memcpy"},
        {"_ZN5probe5TwiceIiEEiT_PFvPvES2_", "int probe::Twice<int>(int, void (*)(void*), void*)", "probe::Twice<int>"},
        {"_ZNK5probe6WalkerclEPKcPFvPvES3_", "probe::Walker::operator()(char const*, void (*)(void*), void*) const",
            "probe::Walker::operator()"},
        {"_ZN12_GLOBAL__N_11fEv", "(anonymous namespace)::f()", "(anonymous namespace)::f"},
        {"_ZZN1A1fEvENKUlvE_clEv", "A::f()::{lambda()#1}::operator()() const", "A::f()::{lambda()#1}::operator()"},
        {"_ZN1AcvbEv", "A::operator bool()", "A::operator bool"},
        {"_ZlsRSoi", "operator<<(std::ostream&, int)", "operator<<"},
        {"_ZltRK1AS1_", "operator<(A const&, A const&)", "operator<"},
        {"_ZN1A1gEv.cold", "A::g() [clone .cold]", "A::g"}, {"_Z", "_Z", "_Z"}};
    for (const auto& [linkName, full, name] : kCases)
    {
        char text[200];
        EXPECT_EQ(DBGHELP(UnDecorateSymbolName)(linkName, text, sizeof text, 0), std::strlen(full));
        EXPECT_STREQ(text, full);
        DBGHELP(UnDecorateSymbolName)(linkName, text, sizeof text, UNDNAME_NAME_ONLY);
        EXPECT_STREQ(text, name);
    }
    char shortText[5];
    EXPECT_EQ(DBGHELP(UnDecorateSymbolName)("_ZN1A1gEv", shortText, sizeof shortText, 0), 4u);
    EXPECT_STREQ(shortText, "A::g");
}

#endif

} // namespace
