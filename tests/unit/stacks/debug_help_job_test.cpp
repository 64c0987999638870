#include "core/ticks.h"
#include "module/late_libraries.h"
#include "platform/dbghelp_probe.h"
#include "stacks/address_texts.h"
#include "stacks/debug_help_wrapper.h"
#include "stacks/module_sources.h"
#include "stacks/stack_dump.h"
#include "support/debug_lines.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

using namespace qx;

namespace
{

using testing::HasSubstr;
using Job = clsDBGHelpWrapperGPFProt;
using JobPtr = std::unique_ptr<Job, CloseDebugHelpJob>;

// Shortens the time limits for a test.
class OwnTimes
{
public:
    OwnTimes(DWORD lock, DWORD command) { TheDebugHelpTimes() = {lock, command}; }
    OwnTimes(const OwnTimes&) = delete;
    OwnTimes& operator=(const OwnTimes&) = delete;
    ~OwnTimes() { TheDebugHelpTimes() = DebugHelpTimes(); }
};

[[gnu::noinline]] StackTraceListPtr KnownFunction(Job& job, int knownParameter)
{
    CONTEXT context{};
    RtlCaptureContext(&context);
    StackTraceListPtr list = job.GetStackTrace(context);
    return knownParameter > 0 ? std::move(list) : nullptr;
}

TEST(DebugHelpJob, WalksWithSymbols)
{
    const JobPtr job(new Job);
    ASSERT_TRUE(job->HasSession());
    const StackTraceListPtr frames = KnownFunction(*job, 42);
    ASSERT_TRUE(frames);
    const DBGStackTraceItem& first = **frames->Records().First();
    EXPECT_EQ(first.size, 9432u);
    EXPECT_EQ(first.addressOnly, 0u);
    EXPECT_THAT(first.symbol, HasSubstr("KnownFunction"));
#if !defined(_WIN32) // on windows these sessions load no lines
    EXPECT_THAT(first.file, HasSubstr("debug_help_job_test.cpp"));
#endif
    EXPECT_THAT(first.module, HasSubstr("debug_help_test"));
    EXPECT_NE(first.moduleBase, 0u);
    // A walk on the service thread returns the same frames, except for the line of this function.
    job->SetOption(Job::kOwnThreadOption, 0);
    EXPECT_EQ(KnownFunction(*job, 42)->Records().Count(), frames->Records().Count());
    job->SetOption(Job::kMaxFramesOption, 0xFFFFFFFF);
    EXPECT_EQ(KnownFunction(*job, 1)->Records().Count(), frames->Records().Count());
    job->SetOption(Job::kMaxFramesOption, 2);
    EXPECT_EQ(KnownFunction(*job, 1)->Records().Count(), 2u);
    job->SetOption(Job::kMaxFramesOption, 0);
    EXPECT_TRUE(KnownFunction(*job, 1)->IsEmpty());
    job->SetOption(Job::kMaxFramesOption, 1);
    job->SetOption(Job::kDetailOption, 0);
    const StackTraceListPtr addresses = KnownFunction(*job, 1);
    EXPECT_EQ((*addresses->Records().First())->addressOnly, 1u);
    EXPECT_STREQ((*addresses->Records().First())->symbol, "");
    EXPECT_THAT((*addresses->Records().First())->module, HasSubstr("debug_help_test"));
}

#if !defined(_WIN32) // values of variables depend on the system's debug-help library

struct WalkFromProbe
{
    Job* job;
    const char* function;
    std::vector<std::string> lines; // of its frame
};

void Walk(void* user)
{
    auto& walk = *static_cast<WalkFromProbe*>(user);
    const StackTraceListPtr frames = KnownFunction(*walk.job, 1);
    const auto& records = frames->Records();
    const auto found = std::find_if(records.begin(), records.end(),
        [&](const DBGStackTraceItem* item)
        { return std::string(item->symbol).find(walk.function) != std::string::npos; });
    ASSERT_NE(found, records.end());
    const qxtest::DebugLines output;
    PrintFrame(**found, clsDebugOutput_qvx_debug::Instance());
    for (const auto& entry : output.Entries())
        walk.lines.emplace_back(entry.text.NarrowText());
}

TEST(DebugHelpJob, ShowsParametersAndLocals)
{
    const JobPtr job(new Job);
    WalkFromProbe walk{job.get(), "Inner3Run", {}};
    ProbeVariables(Walk, &walk);
    const char* const kExpected[] = {"param(small)=0x000000fd", "param(medium)=0x0000fed4", "param(whole)=42",
        "param(large)=-5000000000", "param(byte)=0x000000c8", "param(real)=1.5", "param(wide)=2.25",
        "param(flag)=0x00000001", "param(text)=hello", "param(noText)=<invalid 64 bit Char pointer, NULL HIword>",
        "param(triple)=@@@<param of size 24, possibly struct>", "param(colour)=0x00000007", "param(pointer)=0x00",
        "param(inner)=0x00", "param(argument)=0x00", "local(nested)=77", "local(local)=43",
        "local(array)=@@@<array[5] of Int>", "local(qualified)=-5"};
    ASSERT_EQ(walk.lines.size(), 1 + std::size(kExpected));
    for (std::size_t index = 0; index < std::size(kExpected); ++index)
    {
#if defined(__aarch64__) // this processor passes the structure by reference
        if (std::string(kExpected[index]).starts_with("param(triple)"))
            continue;
#endif
        EXPECT_THAT(walk.lines[1 + index], testing::StartsWith(std::string("        ") + kExpected[index]));
    }

    walk = {job.get(), "ProbeManyVariables", {}};
    ProbeManyVariables(Walk, &walk);
    ASSERT_EQ(walk.lines.size(), 51u); // the rest is left out
    EXPECT_THAT(walk.lines[1], HasSubstr("param(inside)="));
    EXPECT_EQ(walk.lines[50], "        local(e7)=7");
}

#endif

TEST(DebugHelpJob, ListsModules)
{
    const JobPtr job(new Job);
    const ModuleListPtr modules = job->GetModuleList();
    ASSERT_TRUE(modules);
    std::uint64_t last = 0;
    bool hasProgram = false;
    for (const DBGModuleItem* const item : modules->Records())
    {
        EXPECT_EQ(item->size, 832u);
        EXPECT_GE(item->base, last);
        EXPECT_NE(item->imageSize, 0u);
        last = item->base;
        hasProgram |= item->base == reinterpret_cast<std::uint64_t>(GetModuleHandleW(nullptr)) &&
                      std::string(item->path).find("debug_help_test") != std::string::npos;
    }
    EXPECT_TRUE(hasProgram);
    // The session returns the same records again.
    EXPECT_EQ(job->GetModuleList()->Records().First()[0], modules->Records().First()[0]);
}

// A walk loads the symbols of its own modules only. The list of modules is created by the first request.
TEST(DebugHelpJob, ListsModulesThatWereLoadedAfterAWalk)
{
    const JobPtr job(new Job);
    ASSERT_TRUE(KnownFunction(*job, 1));
    HMODULE loaded = LoadLibraryW(L"libutil.so.1");
    if (loaded == nullptr)
        loaded = LoadLibraryW(L"msimg32.dll"); // on the other target
    ASSERT_NE(loaded, nullptr);
    const ModuleListPtr modules = job->GetModuleList();
    const auto& records = modules->Records();
    EXPECT_TRUE(std::any_of(records.begin(), records.end(),
        [=](const DBGModuleItem* item) { return item->base == reinterpret_cast<std::uint64_t>(loaded); }));
    FreeLibrary(loaded);
}

// The sources of modules for systems that lack the preferred one.
TEST(DebugHelpJob, OtherSourcesOfModules)
{
    const auto program = reinterpret_cast<std::uint64_t>(GetModuleHandleW(nullptr));
    const std::vector<LoadedModule> ofProcess = ModulesOfProcess(), ofSnapshot = ModulesOfSnapshot();
    EXPECT_EQ(ofSnapshot.empty(), !Kernel32().p_CreateToolhelp32Snapshot.IsThere());
    for (const auto* const modules : {&ofProcess, &ofSnapshot})
    {
        const auto found =
            std::find_if(modules->begin(), modules->end(), [=](auto& module) { return module.base == program; });
        if (modules == &ofSnapshot && modules->empty())
            continue;
        ASSERT_NE(found, modules->end());
        EXPECT_EQ(found->size, FactsOfModule(program).size);
        EXPECT_GT(found->size, 0x1000u);
    }
    const ModuleFacts facts = FactsOfModule(program);
    EXPECT_THAT(facts.name.NarrowText(), testing::StartsWith("debug_help_test"));
    EXPECT_THAT(facts.path.NarrowText(), testing::EndsWith(facts.name.NarrowText()));
    EXPECT_TRUE(FactsOfModule(program + 1).name.IsEmpty());
}

TEST(DebugHelpJob, ASecondJobWaitsAndHasNoSession)
{
    const OwnTimes times(150, 60'000);
    JobPtr first(new Job);
    ASSERT_TRUE(first->HasSession());
    const unsigned long long start = UtilGetTicks();
    {
        const JobPtr second(new Job); // on the same thread
        EXPECT_GE(UtilGetTicks() - start, 150u);
        EXPECT_FALSE(second->HasSession());
        EXPECT_FALSE(KnownFunction(*second, 1));
        EXPECT_FALSE(second->GetModuleList());
    }
    // When another thread closes the job, the lock is released for all threads.
    std::thread([&first] { first.reset(); }).join();
    EXPECT_TRUE(DebugHelpThreadingLock().TryEnter());
    DebugHelpThreadingLock().Leave();
    EXPECT_TRUE(JobPtr(new Job)->HasSession());
    EXPECT_LT(UtilGetTicks() - start, 30'000u); // no command has waited for its limit
}

TEST(DebugHelpJob, AddressesAsText)
{
    const auto address = reinterpret_cast<std::uint64_t>(&KnownFunction);
    const std::uint64_t addresses[] = {address, 16};
    std::vector<std::string> texts;
    ASSERT_TRUE(DescribeAddresses(
        addresses, 2, true,
        [](void* user, std::size_t, const wchar_t* text)
        { static_cast<std::vector<std::string>*>(user)->push_back(String(text).NarrowText()); },
        &texts));
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_THAT(texts[0], testing::MatchesRegex("debug_help_test.*!.*KnownFunction.* . 0x0 .*job_test.cpp, line .*"));
    EXPECT_EQ(texts[1], "0x00000010");
}

TEST(DebugHelpJob, DumpsTheCallingThread)
{
    qxtest::DebugLines lines;
    DumpStackTraceEx(3, false, true, clsDebugOutput_qvx_debug::Instance());
    EXPECT_EQ(lines.CountOf(L"[0x"), 3u);
    EXPECT_GE(lines.CountOf(L"DumpsTheCallingThread"), 1u);
}

TEST(DebugHelpJob, OneLineForAnAddress)
{
    clsDBGHELP session(clsDBGHELP::kSetsSymbolPath);
    ASSERT_TRUE(session.SetUp());
    wchar_t text[kFrameTextSize];
    const auto address = reinterpret_cast<std::uint64_t>(&KnownFunction);
    FormatFrame(address, text, clsDBGHELP::kAllDetail, session, true);
    const String start(String::kFormatted, L"[0x%08I64x] debug_help_test!", address);
    EXPECT_THAT(String(text).NarrowText(), testing::AllOf(HasSubstr(start.NarrowText()), HasSubstr("KnownFunction")));
    FormatFrame(16, text, clsDBGHELP::kAllDetail, session, true);
    EXPECT_STREQ(String(text).NarrowText(), "[0x00000010] !+0x10 \n");
}

// The service thread is ended before the thread that walks, which must not use the service thread's stack. (On linux
// the service thread isn't terminated, because it owns the locks.) The test runs in a process of its own, because the
// job keeps the locks for good. A first walk measures how long the limit must be to cut off the service thread while it
// waits; a thread that is ended elsewhere may leave a lock of the system locked.
TEST(DebugHelpJob, AWalkThatRunsTooLongIsCutOff)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto cutOffWalk = []
    {
        JobPtr job(new Job);
        const unsigned long long start = UtilGetTicks();
        const bool hasWalked = KnownFunction(*job, 1) != nullptr;
        const auto time = static_cast<DWORD>(UtilGetTicks() - start);
        job.reset(); // a second session waits for the end of the first one
        job.reset(new Job);
        const OwnTimes times(100, time / 4);
        const bool hasFrames = KnownFunction(*job, 1) != nullptr;
        Sleep(300 + 2 * time); // the walk ends
        return hasWalked && job->IsCutOff() && !hasFrames ? 0 : 1;
    };
    EXPECT_EXIT(std::_Exit(cutOffWalk()), testing::ExitedWithCode(0), "");
}

// The last test, because its job keeps the locks for good.
TEST(DebugHelpJobZ, ACommandThatRunsTooLongIsCutOff)
{
    static std::atomic<bool> mayEnd = false;
    qxtest::DebugLines lines;
    JobPtr job(new Job);
    ASSERT_TRUE(job->HasSession());
    const OwnTimes times(100, 200);
    EXPECT_FALSE(job->RunInSession(
        [](clsDBGHELP&, void*)
        {
            while (!mayEnd)
                Sleep(10);
            return true;
        },
        nullptr));
    EXPECT_EQ(lines.CountOf(L"KILLing dump thread..."), 1u);
    EXPECT_TRUE(job->IsCutOff());
    EXPECT_FALSE(job->GetModuleList());
    [[maybe_unused]] static const Job* const leftBehind = job.get(); // so that leak checkers find it
    const unsigned long long start = UtilGetTicks();
    job.reset();
    EXPECT_LT(UtilGetTicks() - start, 1'000u);
    EXPECT_FALSE(JobPtr(new Job)->HasSession());
    mayEnd = true;
}

} // namespace
