// Forks of a process whose other threads use the library and the layer all the time.
#include <qxut23/debug.h>
#include <qxut23/heaps.h>
#include <qxut23/jobs.h>
#include <qxut23/profile.h>
#include <qxut23/strings.h>

#include "faults/rounds.h"
#include "support/test_jobs.h"

#include <windows.h>

#include <dbghelp.h>
#include <process.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace qxtest;

namespace
{

constexpr unsigned kPatience = 30; // time limit of a child in seconds

std::string folder; // the temporary folder of this process and its children

std::vector<wchar_t> Wide(const std::string& text)
{
    std::vector<wchar_t> wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

// These functions return true if everything worked.

bool UseRegistry(const std::string& name)
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\forks", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
        0)
        return false;
    DWORD value = 7, size = sizeof value;
    const bool isWritten =
        RegSetValueExW(key, Wide(name).data(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), size) == 0;
    value = 0;
    RegQueryValueExW(key, Wide(name).data(), nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
    RegCloseKey(key);
    return isWritten && value == 7;
}

bool UseProfile(const std::string& name)
{
    const std::vector<wchar_t> path = Wide(folder + "/" + name);
    HPROFJOB job = ProfJobOpenW(path.data());
    ProfSetStringW(job, nullptr, L"list/value", L"text");
    const bool isSaved = ProfSaveW(job, path.data(), 0) == PROF_OK;
    ProfJobClose(job);
    job = ProfJobOpenW(path.data());
    QXWCHAR value[8] = {};
    ProfGetStringW(job, nullptr, L"list/value", value, 8, L"");
    ProfJobClose(job);
    return isSaved && std::wstring_view(value) == L"text";
}

bool UseTexts()
{
    QXWCHAR text[80];
    UtilDebug(L"a line of %d", static_cast<int>(getpid()));
    if (UtilSafeSprintf(text, 80, L"%d %s", 7, L"wide") != 6 || std::wstring_view(text) != L"7 wide")
        return false;
    SYSTEMTIME now;
    GetLocalTime(&now);
    if (GetDateFormatW(LOCALE_USER_DEFAULT, DATE_LONGDATE, &now, nullptr, text, 80) == 0 ||
        GetLocaleInfoW(0x0407, LOCALE_SMONTHNAME1 + now.wMilliseconds % 12, text, 80) == 0)
        return false;
    SetEnvironmentVariableW(L"QXUT_FORKS", L"value");
    return GetEnvironmentVariableW(L"QXUT_FORKS", text, 80) == 5;
}

void Add(HUTTHREADPOOL pool, TestJob* job, TestHost& host)
{
    UtilThreadPoolAdd(pool, L"job", reinterpret_cast<IUnknown*>(job), &host);
    job->Release();
}

bool UsePool()
{
    JobCounts counts;
    TestHost host{CountAndAnswer(counts, 0)};
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(2, L"pool");
    for (int i = 0; i < 10; ++i)
        Add(pool, new TestJob(counts, [] { UtilDebug(L"in a job"); }), host);
    UtilThreadPoolFinalize(pool, &host);
    UtilThreadPoolClose(pool);
    // A pool compares process ids to find out whether its threads belong to a parent process.
    return counts.runs == 10 && counts.alive == 0 && GetCurrentProcessId() == static_cast<DWORD>(getpid());
}

bool UseMemoryAndEvents()
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::thread setter([event] { SetEvent(event); });
    const bool isSet = WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0;
    setter.join();
    CloseHandle(event);
    return isSet && GlobalFree(block) == nullptr;
}

// The parent's threads and its children share this job. A child also inherits the parent's objects.
HUTHEAPJOB heapJob = nullptr;

bool UseHeaps()
{
    const HUTHEAP heap = UtilHeapCreate(heapJob, L"forks", QXUT_HEAP_DEBUG);
    void* objects[50];
    for (std::uint32_t i = 0; i < 50; ++i)
        objects[i] = UtilHeapObjectAlloc(heap, i * 20, i % 2 == 0 ? QXUT_OBJECT_PLAIN : 0);
    int failures = UtilHeapSizeObjects(heap) != 25 * (4 + 48) + 20 * 50 * 49 / 2;
    for (void* const object : objects)
        failures += UtilHeapObjectFree(heap, object) != 0;
    return failures == 0 && UtilHeapDelete(heap) == 0;
}

// Loaded before the first fork: a child that is created while another thread loads a library can't load any.
HMODULE debugHelp = nullptr;

// Opens and closes a session of the debug-help library. Any value works as the session's name.
bool UseSession(std::uintptr_t session)
{
    const auto open = reinterpret_cast<decltype(SymInitialize)*>(GetProcAddress(debugHelp, "SymInitialize"));
    const auto close = reinterpret_cast<decltype(SymCleanup)*>(GetProcAddress(debugHelp, "SymCleanup"));
    const auto process = reinterpret_cast<HANDLE>(session);
    return open(process, "/tmp;/var", FALSE) && close(process);
}

// Runs the function in a child with a time limit. Returns its exit code, or -1 if it ended in any other way.
int RunChild(const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(kPatience);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Forks, ChildrenWorkWhileOtherThreadsAreBusy)
{
    std::atomic<bool> isOver = false;
    const std::function<bool()> uses[] = {[] { return UseRegistry("parent"); }, [] { return UseProfile("parent"); },
        UseTexts, UseTexts, UsePool, UseMemoryAndEvents, UseHeaps, UseHeaps,
        []
        {
            return UseSession(1);
        }};
    debugHelp = LoadLibraryW(L"dbghelp.dll");
    heapJob = UtilJobOpen(L"forks", 0);
    const HUTHEAP heap = UtilHeapCreate(heapJob, L"parent", QXUT_HEAP_DEBUG);
    void* const object = UtilHeapObjectAlloc(heap, 100, 0);
    std::atomic<int> failures = 0;
    std::vector<std::jthread> threads;
    for (const std::function<bool()>& use : uses)
        threads.emplace_back(
            [&]
            {
                while (!isOver)
                    failures += !use();
            });
    for (int i = 0, rounds = faults::Rounds(50); i < rounds; ++i)
    {
        const int code = RunChild(
            [=]
            {
                const bool works[] = {UseRegistry("child"), UseProfile("child"), UseTexts(), UsePool(),
                    UseMemoryAndEvents(), UseHeaps(), UseSession(2), UtilHeapObjectFree(heap, object) == 0,
                    UtilHeapDelete(heap) == 0};
                if (const auto fault = std::find(std::begin(works), std::end(works), false); fault != std::end(works))
                    return 1 + static_cast<int>(fault - works);
                UtilJobClose(heapJob); // with the heaps that the parent's threads were using
                return 0;
            });
        ASSERT_EQ(code, 0) << "fork " << i;
    }
    isOver = true;
    threads.clear(); // waits for them
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(UtilHeapDelete(heap), QXUT_HEAP_LEFT_OVER);
    EXPECT_EQ(UtilJobClose(heapJob), 0);
}

// The workers don't exist in the child. It must neither wait for them nor for the job that one of them was running.
TEST(Forks, ChildUsesAPoolThatTheParentOpened)
{
    JobCounts counts;
    TestHost host{CountAndAnswer(counts, 0)};
    const HANDLE begun = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(1, L"pool");
    Add(pool, new TestJob(counts, [&] { SetEvent(begun), WaitForSingleObject(ended, INFINITE); }), host);
    Add(pool, new TestJob(counts), host);
    WaitForSingleObject(begun, INFINITE);
    const auto finish = [&]
    {
        Add(pool, new TestJob(counts), host);
        UtilThreadPoolFinalize(pool, &host);
        UtilThreadPoolClose(pool);
        return counts.runs.load();
    };
    EXPECT_EQ(RunChild(finish), 3); // includes the job that the parent's worker had begun
    EXPECT_EQ(RunChild([&] { return UtilThreadPoolClose(pool), 0; }), 0);
    SetEvent(ended);
    EXPECT_EQ(finish(), 3);
    EXPECT_EQ(counts.alive, 0);
    CloseHandle(begun);
    CloseHandle(ended);
}

// A lock that a thread of the parent held for a long time, or waited for, doesn't block the child.
TEST(Forks, ChildTakesOverWhatTheParentsThreadsHeld)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const HANDLE isHeld = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE automatic = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::thread holder(
        [&]
        {
            EnterCriticalSection(&section);
            SetEvent(isHeld);
            WaitForSingleObject(ended, INFINITE);
            LeaveCriticalSection(&section);
        });
    std::thread waiter([&] { WaitForSingleObject(automatic, INFINITE); });
    WaitForSingleObject(isHeld, INFINITE);
    const HANDLE thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, 0, [](void* event) -> unsigned { return WaitForSingleObject(event, INFINITE); }, ended, 0, nullptr));
    Sleep(20);
    const ULONGLONG begin = GetTickCount64();
    const int code = RunChild(
        [&]
        {
            EnterCriticalSection(&section);
            if (WaitForSingleObject(thread, INFINITE) != WAIT_OBJECT_0)
                return 1;
            // A parent's thread that waits for the event must not consume a signal meant for a thread of the child.
            std::thread own([&] { WaitForSingleObject(automatic, INFINITE); });
            Sleep(20);
            SetEvent(automatic);
            own.join();
            LeaveCriticalSection(&section);
            return TryEnterCriticalSection(&section) ? 0 : 2;
        });
    EXPECT_EQ(code, 0);
    EXPECT_LT(GetTickCount64() - begin, 10'000u);
    SetEvent(ended);
    SetEvent(automatic);
    holder.join();
    waiter.join();
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    for (const HANDLE handle : {isHeld, ended, automatic, thread})
        CloseHandle(handle);
}

// A process may end while other threads create temporary files, for example when the user interrupts it.
TEST(Forks, EndOfAProcessDeletesFilesThatAreJustCreated)
{
    const std::filesystem::path temporary = folder + "/temporary";
    std::filesystem::create_directory(temporary);
    for (int i = 0; i < 100; ++i)
    {
        const auto create = [&](int number)
        {
            for (int file = 0;; ++file)
                CreateFileW(Wide(temporary / (std::to_string(number) + '.' + std::to_string(file))).data(),
                    GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        };
        const int code = RunChild(
            [&]
            {
                for (int number = 0; number < 4; ++number)
                    std::thread(create, number).detach();
                Sleep(3);
                std::exit(7);
                return 0;
            });
        EXPECT_EQ(code, 7);
        ASSERT_TRUE(std::filesystem::is_empty(temporary)) << "run " << i;
    }
}

// A thread that forks inside a section still owns it in the child.
TEST(Forks, ChildKeepsItsOwnSections)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    const int code = RunChild(
        [&]
        {
            EnterCriticalSection(&section);
            LeaveCriticalSection(&section);
            bool isFree = true;
            std::thread([&] { isFree = TryEnterCriticalSection(&section) != FALSE; }).join();
            if (isFree)
                return 1;
            LeaveCriticalSection(&section);
            return RunChild([&] { return TryEnterCriticalSection(&section) ? 0 : 2; });
        });
    EXPECT_EQ(code, 0);
    LeaveCriticalSection(&section);
}

} // namespace

// The library reads the name of its log file when it is loaded. Therefore the first process stores the settings and
// executes the program again.
int main(int count, char** arguments)
{
    if (const char* const known = std::getenv("QXUT_FORK_TEST"))
    {
        folder = known;
        testing::InitGoogleTest(&count, arguments);
        const int result = RUN_ALL_TESTS();
        std::filesystem::remove_all(folder);
        return result;
    }
    char name[] = "/tmp/qxut-forks-XXXXXX";
    folder = mkdtemp(name);
    std::ofstream(folder + "/machine.reg")
        << "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\software\\trelmo]\n"
        << "\"Debug.LogFilename\"=\"" << folder << "/trace.log\"\n";
    setenv("QXUT_FORK_TEST", name, 1);
    setenv("QXPLATFORM_HOME", name, 1);
    execv("/proc/self/exe", arguments);
    return 1;
}
