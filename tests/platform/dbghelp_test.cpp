// The debug-help library: one session for all tests, because opening one is slow on some systems.
#include "dbghelp_probe.h"
#include "frame_probe.h"
#include "stacks/context_registers.h"

#include <windows.h>

#include <dbghelp.h>
#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

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

struct Frame
{
    STACKFRAME64 raw;
    std::string symbol;
};

struct Named
{
    SYMBOL_INFO info;
    std::string name;
    std::string bytes; // in memory
};

std::string SymbolAt(DWORD64 address, DWORD64& displacement)
{
    BIND(SymGetSymFromAddr64);
    alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + 500] = {};
    auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
    symbol.SizeOfStruct = sizeof symbol;
    symbol.MaxNameLength = 500;
    return SymGetSymFromAddr64_(GetCurrentProcess(), address, &displacement, &symbol) ? symbol.Name : "";
}

std::vector<Frame> Walk()
{
    BIND(StackWalk64);
    BIND(SymFunctionTableAccess64);
    BIND(SymGetModuleBase64);
    CONTEXT context{};
    RtlCaptureContext(&context);
    std::vector<Frame> frames;
    STACKFRAME64 frame{};
    frame.AddrPC = {qx::ProgramCounterOf(context), 0, AddrModeFlat};
    frame.AddrFrame = frame.AddrStack = {qx::StackPointerOf(context), 0, AddrModeFlat};
    while (frames.size() < 8 && StackWalk64_(qx::MachineOf<CONTEXT>(), GetCurrentProcess(), GetCurrentThread(), &frame,
                                    &context, nullptr, SymFunctionTableAccess64_, SymGetModuleBase64_, nullptr))
    {
        DWORD64 displacement = 0;
        frames.push_back({frame, SymbolAt(frame.AddrPC.Offset - (frames.empty() ? 0 : 1), displacement)});
    }
    return frames;
}

void TakeFrames(void* frames)
{
    *static_cast<std::vector<Frame>*>(frames) = Walk();
}

TEST_F(DebugHelp, WalksAndNamesFunctions)
{
    std::vector<Frame> frames;
    ProbeNames(
        [](void* user)
        {
            if (static_cast<std::vector<Frame>*>(user)->empty())
                TakeFrames(user);
        },
        &frames);
    ASSERT_GE(frames.size(), 5u);
    std::string names;
    for (const Frame& frame : frames)
        names += frame.symbol + "\n";
    EXPECT_THAT(names, HasSubstr("ProbeNames\n")) << names;
    EXPECT_THAT(names, HasSubstr("Twice"));
}

int FramesOfProbe(void* frames)
{
    TakeFrames(frames);
    return 1;
}

[[gnu::noinline]] void CallsTheFrameProbe(std::vector<Frame>& frames)
{
    EXPECT_EQ(ProbeFrame(FramesOfProbe, &frames), 18);
}

// The innermost function needs the rules of the debug information, and so do the registers of the functions around it.
TEST_F(DebugHelp, WalksByDebugInformation)
{
    std::vector<Frame> frames;
    CallsTheFrameProbe(frames);
    std::string names;
    for (const Frame& frame : frames)
        names += frame.symbol + "\n";
    EXPECT_THAT(names, testing::ContainsRegex("ProbeFrame\n.*CallsTheFrameProbe.*\n.*WalksByDebugInformation"))
        << names;
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

#if !defined(_WIN32) // the other implementation keeps the extension of names that it is given
    EXPECT_STREQ(info.ModuleName, "libqxdbghelp_probe");
#endif

    EXPECT_FALSE(SymGetModuleInfo64_(GetCurrentProcess(), 0x1000, &info));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
#if !defined(_WIN32) // the other implementation accepts records of any size
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

#if !defined(_WIN32) // the other implementation makes different names, and addresses variables by other registers

TEST_F(DebugHelp, NamesAreReadable)
{
    struct Case
    {
        const char* linkName;
        const char* full;
        const char* name;
    };
    constexpr Case kCases[] = {
        {"main", "main", "main"},
        {"memcpy@@GLIBC_2.14", "memcpy", "memcpy"},
        {"_ZN5probe5TwiceIiEEiT_PFvPvES2_", "int probe::Twice<int>(int, void (*)(void*), void*)", "probe::Twice<int>"},
        {"_ZNK5probe6WalkerclEPKcPFvPvES3_", "probe::Walker::operator()(char const*, void (*)(void*), void*) const",
            "probe::Walker::operator()"},
        {"_ZN12_GLOBAL__N_11fEv", "(anonymous namespace)::f()", "(anonymous namespace)::f"},
        {"_ZZN1A1fEvENKUlvE_clEv", "A::f()::{lambda()#1}::operator()() const", "A::f()::{lambda()#1}::operator()"},
        {"_ZN1AcvbEv", "A::operator bool()", "A::operator bool"},
        {"_ZlsRSoi", "operator<<(std::ostream&, int)", "operator<<"},
        {"_ZltRK1AS1_", "operator<(A const&, A const&)", "operator<"},
        {"_ZN1A1gEv.cold", "A::g() [clone .cold]", "A::g"},
        {"_Z", "_Z", "_Z"},
    };
    BIND(UnDecorateSymbolName);
    for (const Case& test : kCases)
    {
        char text[200];
        EXPECT_EQ(UnDecorateSymbolName_(test.linkName, text, sizeof text, 0), std::strlen(test.full));
        EXPECT_STREQ(text, test.full);
        UnDecorateSymbolName_(test.linkName, text, sizeof text, UNDNAME_NAME_ONLY);
        EXPECT_STREQ(text, test.name);
    }
    char shortText[5];
    EXPECT_EQ(UnDecorateSymbolName_("_ZN1A1gEv", shortText, sizeof shortText, 0), 4u);
    EXPECT_STREQ(shortText, "A::g");
}

BOOL CALLBACK TakeVariable(PSYMBOL_INFO info, ULONG, PVOID list)
{
    static_cast<std::vector<Named>*>(list)->push_back({*info, info->Name, ""});
    return TRUE;
}

// Such a structure has no place in the frame.
#if defined(__aarch64__) // its calling convention
constexpr bool kPassesStructuresByReference = true;
#else
constexpr bool kPassesStructuresByReference = false;
#endif

void ListVariablesOfCaller(void* list)
{
    const std::vector<Frame> frames = Walk();
    BIND(SymSetContext);
    BIND(SymEnumSymbols);
    for (const Frame& frame : frames)
    {
        if (frame.symbol.find("Inner3Run") == frame.symbol.npos)
            continue;
        IMAGEHLP_STACK_FRAME context{};
        context.InstructionOffset = frame.raw.AddrPC.Offset - 1;
        ASSERT_TRUE(SymSetContext_(GetCurrentProcess(), &context, nullptr));
        auto& variables = *static_cast<std::vector<Named>*>(list);
        ASSERT_TRUE(SymEnumSymbols_(GetCurrentProcess(), 0, nullptr, TakeVariable, list));
        for (Named& variable : variables)
        {
            if (variable.name == "triple" && kPassesStructuresByReference)
                continue;
            ASSERT_NE(variable.info.Address, 0u) << variable.name;
            ASSERT_EQ(variable.info.Register, 22u);
            variable.bytes.assign(
                reinterpret_cast<const char*>(frame.raw.AddrFrame.Offset + variable.info.Address), variable.info.Size);
        }
    }
}

template <class Value>
std::string BytesOf(Value value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

TEST_F(DebugHelp, ListsVariablesWithTypesAndPlaces)
{
    struct Expected
    {
        const char* name;
        bool isParameter;
        ULONG tag;
        ULONG baseType; // 0: none; of pointers and arrays, of what they refer to
        std::string bytes;
    };
    const Expected kExpected[] = {
        {"small", true, SymTagBaseType, 2, BytesOf<signed char>(-3)},
        {"medium", true, SymTagBaseType, 6, BytesOf<short>(-300)},
        {"whole", true, SymTagBaseType, 6, BytesOf(42)},
        {"large", true, SymTagBaseType, 6, BytesOf(-5000000000LL)},
        {"byte", true, SymTagBaseType, 2, BytesOf<unsigned char>(200)},
        {"real", true, SymTagBaseType, 8, BytesOf(1.5F)},
        {"wide", true, SymTagBaseType, 8, BytesOf(2.25)},
        {"flag", true, SymTagBaseType, 10, BytesOf(true)},
        {"text", true, SymTagPointerType, 2, ""},
        {"noText", true, SymTagPointerType, 2, BytesOf<const char*>(nullptr)},
        {"triple", true, SymTagUDT, 0, BytesOf(1LL) + BytesOf(2LL) + BytesOf(3LL)},
        {"colour", true, SymTagEnum, 2, BytesOf<char>(7)},
        {"pointer", true, SymTagPointerType, 1, ""},
        {"inner", true, SymTagPointerType, 0, BytesOf(&ListVariablesOfCaller)},
        {"argument", true, SymTagPointerType, 1, ""},
        {"nested", false, SymTagBaseType, 6, BytesOf(77)},
        {"local", false, SymTagBaseType, 6, BytesOf(43)},
        {"array", false, SymTagArrayType, 6, BytesOf(1) + BytesOf(2) + BytesOf(3) + BytesOf(4) + BytesOf(5)},
        {"qualified", false, SymTagBaseType, 6, BytesOf(-5LL)},
    };
    std::vector<Named> variables;
    ProbeVariables(ListVariablesOfCaller, &variables);
    ASSERT_EQ(variables.size(), std::size(kExpected));
    BIND(SymGetTypeInfo);
    for (std::size_t index = 0; index < variables.size(); ++index)
    {
        const Expected& expected = kExpected[index];
        const Named& found = variables[index];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(found.name, expected.name);
        EXPECT_EQ((found.info.Flags & SYMFLAG_PARAMETER) != 0, expected.isParameter);
        const auto query = [&](ULONG type, IMAGEHLP_SYMBOL_TYPE_INFO what)
        {
            ULONG value = 0;
            return SymGetTypeInfo_(GetCurrentProcess(), found.info.ModBase, type, what, &value) ? value : 0;
        };
        EXPECT_EQ(query(found.info.TypeIndex, TI_GET_SYMTAG), expected.tag);
        ULONG base = query(found.info.TypeIndex, TI_GET_BASETYPE);
        if (base == 0)
            base = query(query(found.info.TypeIndex, TI_GET_TYPE), TI_GET_BASETYPE);
        EXPECT_EQ(base, expected.baseType);
        EXPECT_EQ(query(found.info.TypeIndex, TI_GET_COUNT), expected.tag == SymTagArrayType ? 5u : 0u);
        if (!expected.bytes.empty() && found.info.Address != 0)
        {
            EXPECT_EQ(found.bytes, expected.bytes);
        }
    }
}

#endif

} // namespace
