// Event tracing. Linux only: on windows a session takes an administrator, and under Wine the functions do nothing.
#include "support/own_settings.h"
#include "support/run_in_threads.h"
#include "system_support.h"

#include "trace/event_ring.h"
#include "trace/trace_file.h"

#include <evntprov.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qxplatform;
using namespace qxtest;
namespace fs = std::filesystem;

namespace
{

constexpr GUID kProvider = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

struct Told
{
    std::atomic<ULONG> calls = 0, isEnabled = 0, level = 99;
    std::atomic<ULONGLONG> any = 0;
};

void NTAPI Tell(
    LPCGUID id, ULONG isEnabled, UCHAR level, ULONGLONG any, ULONGLONG, PEVENT_FILTER_DESCRIPTOR, void* told)
{
    auto& result = *static_cast<Told*>(told);
    result.level = level;
    result.any = any;
    ++result.calls;
    result.isEnabled = std::memcmp(id, &kProvider, sizeof(GUID)) == 0 ? isEnabled : 77; // last: the tests wait for it
}

bool Await(const std::function<bool()>& condition)
{
    for (int look = 0; look < 2'000 && !condition(); ++look)
        usleep(1'000);
    return condition();
}

ULONG WriteText(REGHANDLE handle, std::string_view text, UCHAR level = 4)
{
    const EVENT_DESCRIPTOR descriptor = {7, 1, 0, level, 0, 0, 1};
    EVENT_DATA_DESCRIPTOR pieces[2] = {{reinterpret_cast<ULONGLONG>(text.data()), 1, 0},
        {reinterpret_cast<ULONGLONG>(text.data() + 1), static_cast<ULONG>(text.size() - 1), 0}};
    return EventWrite(handle, &descriptor, 2, pieces);
}

struct Recorded
{
    std::map<std::string, int> texts; // how often each was recorded
    std::map<std::uint32_t, int> processes;
    std::size_t events = 0, lost = 0;
};

class Events : public testing::Test
{
protected:
    ~Events() override { EXPECT_FALSE(fs::exists(fs::symlink_status(BlockPath()))); } // the last user removes it

    std::string BlockPath() const
    {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (const char* c = getenv("QXPLATFORM_HOME"); *c; ++c)
            hash = (hash ^ static_cast<unsigned char>(*c)) * 0x100000001B3;
        char name[100];
        std::snprintf(name, sizeof(name), "/dev/shm/qxplatform-%u/trace-%016llx", geteuid(),
            static_cast<unsigned long long>(hash));
        return name;
    }

    Recorded Read() const
    {
        std::ifstream stream(native, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        Recorded result;
        TraceChunkHead chunk;
        for (std::size_t at = sizeof(TraceFileHead); at < bytes.size(); at += sizeof(chunk) + chunk.size)
        {
            std::memcpy(&chunk, bytes.data() + at, sizeof(chunk));
            if (std::string_view(chunk.magic, 4) != "QXCH")
                return ADD_FAILURE() << "no chunk at " << at, result;
            result.lost += chunk.lost;
            if (chunk.kind == TraceChunkHead::kProcessName)
            {
                ++result.processes[chunk.processId];
                continue;
            }
            EventHead event;
            const std::size_t begin = at + sizeof(chunk);
            for (std::size_t offset = begin; offset < begin + chunk.size; offset += event.size, ++result.events)
            {
                std::memcpy(&event, bytes.data() + offset, sizeof(event));
                ++result.texts[bytes.substr(offset + sizeof(event), event.dataSize)];
            }
        }
        return result;
    }

    OwnSettings settings; // a session of its own
    TempFolder folder;
    const qx::String file = folder.Path(L"events.trace");
    const std::string native = std::string(file.NarrowText());
};

TEST_F(Events, ASessionFromItsStartToItsEnd)
{
    const auto threads = []
    {
        return std::distance(fs::directory_iterator("/proc/self/task"), {});
    };
    Told early, late;
    REGHANDLE first = 0, second = 0;
    EventRegister(&kProvider, nullptr, nullptr, &first); // a sanitizer starts a thread of its own with the first one
    EventUnregister(first);
    const auto before = threads();
    ASSERT_EQ(EventRegister(&kProvider, &Tell, &early, &first), 0u);
    EXPECT_EQ(early.calls, 0u);
    EXPECT_EQ(WriteText(first, "unheard"), 0u);
    wchar_t stopped[MAX_PATH] = {};
    EXPECT_EQ(QxStopTrace(stopped, MAX_PATH), DWORD{ERROR_NOT_FOUND});
    ASSERT_EQ(QxStartTrace(file.Text(), 4), 0u);
    EXPECT_EQ(QxStartTrace(folder.Path(L"other").Text(), 0), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_TRUE(Await([&] { return early.isEnabled == 1; }));
    EXPECT_EQ(early.level, 4u);
    EXPECT_EQ(early.any, ~0ULL);
    ASSERT_EQ(EventRegister(&kProvider, &Tell, &late, &second), 0u);
    EXPECT_EQ(late.isEnabled, 1u); // called during the registration
    EXPECT_EQ(WriteText(second, "heard"), 0u);
    EXPECT_EQ(WriteText(second, "above the level", 5), 0u);
    EXPECT_EQ(QxStopTrace(stopped, MAX_PATH), 0u);
    EXPECT_EQ(qx::String(stopped), file);
    EXPECT_EQ(Read().texts, (std::map<std::string, int>{{"heard", 1}})); // nothing is written after the stop
    EXPECT_TRUE(Await([&] { return early.isEnabled == 0 && late.isEnabled == 0; }));
    EXPECT_EQ(EventUnregister(second), 0u);
    EXPECT_EQ(EventUnregister(second), ULONG{ERROR_INVALID_HANDLE});
    EXPECT_EQ(WriteText(second, "gone"), ULONG{ERROR_INVALID_HANDLE});
    EXPECT_EQ(EventUnregister(first), 0u);
    EXPECT_TRUE(Await([&] { return threads() == before; })); // the kernel forgets a thread a little later
    EXPECT_EQ(QxStartTrace(file.Text(), 0), DWORD{ERROR_FILE_EXISTS});
}

// More than the rings can take. What is missing is counted.
TEST_F(Events, ManyThreadsWriteMoreThanFits)
{
    constexpr unsigned kThreads = 4, kEach = 6'000;
    ASSERT_EQ(QxStartTrace(file.Text(), 0), 0u);
    REGHANDLE handle = 0;
    ASSERT_EQ(EventRegister(&kProvider, nullptr, nullptr, &handle), 0u);
    std::atomic<unsigned> refused = 0;
    RunInThreads(kThreads,
        [&](unsigned number)
        {
            for (unsigned event = 0; event < kEach; ++event)
                refused += WriteText(handle, std::to_string(number) + std::string(event % 300, 'x')) != 0;
        });
    EXPECT_EQ(WriteText(handle, std::string(kLongestEvent, 'x')), ULONG{ERROR_MORE_DATA});
    EventUnregister(handle);
    const Recorded recorded = Read();
    EXPECT_EQ(recorded.events + recorded.lost, kThreads * kEach);
    EXPECT_EQ(recorded.lost, refused);
    EXPECT_GT(recorded.events, kThreads * 100u);
    EXPECT_EQ(QxStopTrace(nullptr, 0), 0u);
}

// A forked child has no thread of the layer and must not write its parent's events again.
TEST_F(Events, AForkedChildBeginsAnew)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer doesn't support threads in a forked child";
#endif
    ASSERT_EQ(QxStartTrace(file.Text(), 0), 0u);
    REGHANDLE handle = 0;
    ASSERT_EQ(EventRegister(&kProvider, nullptr, nullptr, &handle), 0u);
    WriteText(handle, "parent");
    const pid_t child = fork();
    if (child == 0)
    {
        WriteText(handle, "isn't recorded");
        REGHANDLE own = 0;
        const bool isDone = EventRegister(&kProvider, nullptr, nullptr, &own) == 0 && WriteText(own, "child") == 0 &&
                            EventUnregister(own) == 0 && EventUnregister(handle) == 0;
        _exit(isDone ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EventUnregister(handle);
    QxStopTrace(nullptr, 0);
    const Recorded recorded = Read();
    EXPECT_EQ(recorded.texts, (std::map<std::string, int>{{"parent", 1}, {"child", 1}}));
    EXPECT_EQ(recorded.processes.size(), 2u);
}

TEST_F(Events, WhatIsInTheWayIsRefused)
{
    Told told;
    REGHANDLE handle = 0;
    const auto isRefused = [&]
    {
        return EventRegister(&kProvider, &Tell, &told, &handle) != 0 && QxStartTrace(file.Text(), 0) != 0;
    };
    fs::create_directories(fs::path(BlockPath()).parent_path());
    fs::permissions(fs::path(BlockPath()).parent_path(), fs::perms::owner_all);
    ASSERT_EQ(mkfifo(BlockPath().c_str(), 0600), 0);
    EXPECT_TRUE(isRefused());
    fs::remove(BlockPath());
    fs::create_symlink("/dev/null", BlockPath());
    EXPECT_TRUE(isRefused());
    fs::remove(BlockPath());
    std::ofstream(BlockPath()) << "x";
    fs::permissions(BlockPath(), fs::perms::owner_all | fs::perms::group_read);
    EXPECT_TRUE(isRefused());
    fs::remove(BlockPath());
    EXPECT_EQ(EventRegister(nullptr, &Tell, &told, &handle), ULONG{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(EventWrite(0, nullptr, 0, nullptr), ULONG{ERROR_INVALID_PARAMETER});
    for (const REGHANDLE wrong : {REGHANDLE{0}, REGHANDLE{1}, ~REGHANDLE{0}, REGHANDLE{1} << 32 | 5'000})
        EXPECT_EQ(WriteText(wrong, "xx"), ULONG{ERROR_INVALID_HANDLE});
    // The file is replaced by a FIFO before anybody has opened it: there is nothing to record to.
    ASSERT_EQ(QxStartTrace(file.Text(), 0), 0u);
    fs::remove(native);
    ASSERT_EQ(mkfifo(native.c_str(), 0600), 0);
    EXPECT_EQ(EventRegister(&kProvider, &Tell, &told, &handle), 0u);
    EXPECT_EQ(told.calls, 0u);
    EventUnregister(handle);
    EXPECT_EQ(QxStopTrace(nullptr, 0), 0u);
}

} // namespace
