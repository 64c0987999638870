// The debug-help library: one session for all tests, because opening one is slow on some systems.
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
#define BIND(name) const auto name##_ = Bind<decltype(name)>(#name)

const char* FileNameOf(const char* path)
{
    return path + (std::string(path).find_last_of("/\\") + 1);
}

class DebugHelp : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        BIND(SymInitialize);
        BIND(SymSetOptions);
        BIND(EnumerateLoadedModules64);
        ASSERT_NE(SymInitialize_, nullptr);
        ASSERT_TRUE(SymInitialize_(GetCurrentProcess(), nullptr, FALSE));
        SymSetOptions_(SYMOPT_LOAD_LINES | SYMOPT_LOAD_ANYTHING);
        // The name in the enumeration needn't be a path.
        const auto load = [](PCSTR, DWORD64 base, ULONG size, PVOID) -> BOOL
        {
            BIND(SymLoadModuleEx);
            char path[MAX_PATH] = {};
            GetModuleFileNameA(reinterpret_cast<HMODULE>(base), path, MAX_PATH);
            SymLoadModuleEx_(GetCurrentProcess(), nullptr, path, FileNameOf(path), base, size, nullptr, 0);
            return TRUE;
        };
        ASSERT_TRUE(EnumerateLoadedModules64_(GetCurrentProcess(), load, nullptr));
    }
    static void TearDownTestSuite()
    {
        BIND(SymCleanup);
        EXPECT_TRUE(SymCleanup_(GetCurrentProcess()));
        EXPECT_FALSE(SymCleanup_(GetCurrentProcess()));
    }
};

// Walks, and appends the names of the functions to the text.
int TakeNames(void* text)
{
    BIND(StackWalk64);
    BIND(SymFunctionTableAccess64);
    BIND(SymGetModuleBase64);
    BIND(SymGetSymFromAddr64);
    CONTEXT context{};
    RtlCaptureContext(&context);
    STACKFRAME64 frame{};
    frame.AddrPC = {qx::ProgramCounterOf(context), 0, AddrModeFlat};
    frame.AddrFrame = frame.AddrStack = {qx::StackPointerOf(context), 0, AddrModeFlat};
    for (int depth = 0; depth < 8; ++depth)
    {
        if (!StackWalk64_(qx::MachineOf<CONTEXT>(), GetCurrentProcess(), GetCurrentThread(), &frame, &context, nullptr,
                SymFunctionTableAccess64_, SymGetModuleBase64_, nullptr))
            break;
        alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + 500] = {};
        auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLength = 500;
        DWORD64 displacement = 0;
        if (SymGetSymFromAddr64_(GetCurrentProcess(), frame.AddrPC.Offset - (depth > 0), &displacement, &symbol))
            *static_cast<std::string*>(text) += symbol.Name + std::string("\n");
    }
    return 1;
}

TEST_F(DebugHelp, WalksAndNamesFunctions)
{
    std::string names;
    ProbeNames([](void* text) { TakeNames(text); }, &names);
    EXPECT_THAT(names, testing::ContainsRegex("Twice.*\n.*ProbeNames\n"));
}

[[gnu::noinline]] void CallsTheFrameProbe(std::string& names)
{
    EXPECT_EQ(ProbeFrame(TakeNames, &names), 18);
}

// The innermost function needs the rules of the debug information, and so do the registers of the functions around it.
TEST_F(DebugHelp, WalksByDebugInformation)
{
    std::string names;
    CallsTheFrameProbe(names);
    EXPECT_THAT(names, testing::ContainsRegex("ProbeFrame\n.*CallsTheFrameProbe.*\n.*WalksByDebugInformation"));
}

TEST_F(DebugHelp, FindsModulesByAddress)
{
    BIND(SymGetModuleBase64);
    BIND(SymGetModuleInfo64);
    const auto address = reinterpret_cast<DWORD64>(&ProbeNames);
    IMAGEHLP_MODULE64 info{};
    info.SizeOfStruct = sizeof info;
    ASSERT_TRUE(SymGetModuleInfo64_(GetCurrentProcess(), address, &info));
    EXPECT_EQ(info.BaseOfImage, SymGetModuleBase64_(GetCurrentProcess(), address));
    EXPECT_THAT(info.ModuleName, HasSubstr("qxdbghelp_probe"));
    EXPECT_EQ(info.SymType, SymDia);
    EXPECT_GT(info.ImageSize, address - info.BaseOfImage);
    EXPECT_FALSE(SymGetModuleInfo64_(GetCurrentProcess(), 0x1000, &info));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
#if !defined(_WIN32) // the other implementation keeps the extension of names and accepts records of any size
    EXPECT_STREQ(info.ModuleName, "libqxdbghelp_probe");
    info.SizeOfStruct = 12;
    EXPECT_FALSE(SymGetModuleInfo64_(GetCurrentProcess(), address, &info));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
#endif
}

TEST_F(DebugHelp, FindsLines)
{
    BIND(SymGetLineFromAddr64);
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD displacement = 0;
    const auto address = reinterpret_cast<DWORD64>(&ProbeNames);
    ASSERT_TRUE(SymGetLineFromAddr64_(GetCurrentProcess(), address, &displacement, &line));
    EXPECT_THAT(line.FileName, HasSubstr("dbghelp_probe.cpp"));
    EXPECT_EQ(line.LineNumber, 70u);
    EXPECT_EQ(displacement, 0u);
    EXPECT_EQ(line.Address, address);
}

#if !defined(_WIN32) // the other implementation makes different names

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
    BIND(UnDecorateSymbolName);
    for (const auto& [linkName, full, name] : kCases)
    {
        char text[200];
        EXPECT_EQ(UnDecorateSymbolName_(linkName, text, sizeof text, 0), std::strlen(full));
        EXPECT_STREQ(text, full);
        UnDecorateSymbolName_(linkName, text, sizeof text, UNDNAME_NAME_ONLY);
        EXPECT_STREQ(text, name);
    }
    char shortText[5];
    EXPECT_EQ(UnDecorateSymbolName_("_ZN1A1gEv", shortText, sizeof shortText, 0), 4u);
    EXPECT_STREQ(shortText, "A::g");
}

// Appends the variable's name, the tag of its type, and its base type; of pointers and arrays, of what they refer to.
BOOL CALLBACK TakeVariable(PSYMBOL_INFO info, ULONG, PVOID text)
{
    BIND(SymGetTypeInfo);
    const auto query = [&](ULONG type, IMAGEHLP_SYMBOL_TYPE_INFO what)
    {
        ULONG value = 0;
        return SymGetTypeInfo_(GetCurrentProcess(), info->ModBase, type, what, &value) ? value : 0;
    };
    ULONG base = query(info->TypeIndex, TI_GET_BASETYPE);
    if (base == 0)
        base = query(query(info->TypeIndex, TI_GET_TYPE), TI_GET_BASETYPE);
    *static_cast<std::string*>(text) +=
        info->Name + (' ' + std::to_string(query(info->TypeIndex, TI_GET_SYMTAG))) + '/' + std::to_string(base) + "; ";
    return TRUE;
}

void TakeVariablesOfCaller(void* text)
{
    BIND(SymSetContext);
    BIND(SymEnumSymbols);
    IMAGEHLP_STACK_FRAME context{};
    context.InstructionOffset = reinterpret_cast<DWORD64>(__builtin_return_address(0)) - 1;
    EXPECT_TRUE(SymSetContext_(GetCurrentProcess(), &context, nullptr));
    EXPECT_TRUE(SymEnumSymbols_(GetCurrentProcess(), 0, nullptr, TakeVariable, text));
}

// The tests of the library show the values, too.
TEST_F(DebugHelp, ListsVariablesWithTypes)
{
    std::string variables;
    ProbeVariables(TakeVariablesOfCaller, &variables);
    EXPECT_EQ(variables,
        "small 16/2; medium 16/6; whole 16/6; large 16/6; byte 16/2; real 16/8; wide 16/8; flag 16/10; "
        "text 14/2; noText 14/2; triple 11/0; colour 12/2; pointer 14/1; inner 14/0; argument 14/1; "
        "nested 16/6; local 16/6; array 15/6; qualified 16/6; ");
}

#endif

} // namespace
