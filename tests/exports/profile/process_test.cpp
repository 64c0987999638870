// Two processes that share a profile.
#include "exports/profile/whole_content.h"
#include "support/peer_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <initializer_list>
#include <thread>

using namespace profiletest;
using qxtest::PeerProcess;

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

// Builds the peer's command line: COMMAND FILE REST.
qx::String Line(const std::string& command, const std::string& path, const std::string& rest)
{
    return qx::String(Wide(command + " \"" + path + "\" " + rest));
}

void MakeFile(const std::string& path)
{
    const Job job;
    FillWhole(job, 'z', 10);
    ASSERT_EQ(job.Save(path), PROF_OK);
}

// Reads the file until the peers, which write to it, are done: its contents are whole each time.
void ExpectWholeContents(const std::string& path, std::initializer_list<PeerProcess*> peers)
{
    const auto work = std::async(std::launch::async,
        [peers]
        {
            for (PeerProcess* const peer : peers)
                EXPECT_EQ(peer->Wait(), 0);
        });
    for (bool isDone = false; !isDone;)
    {
        isDone = work.wait_for(seconds(0)) == std::future_status::ready;
        const Job job(path);
        EXPECT_EQ(job.Error(), PROF_OK);
        EXPECT_EQ(LetterOfWhole(job).size(), 1u) << LetterOfWhole(job);
    }
}

} // namespace

TEST(ProfileProcesses, ExclusiveJobLetsReadersInAndKeepsWritersOut)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    MakeFile(path);
    PeerProcess holder(L"profile_peer", Line("hold", path, ""));
    for (int i = 0; i < 3000 && !std::filesystem::exists(path + ".ready"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(std::filesystem::exists(path + ".ready"));

    EXPECT_EQ(LetterOfWhole(Job(path)), "z");

    // A waiting open succeeds when the holder closes the file.
    const Clock::time_point start = Clock::now();
    auto release = std::async(std::launch::async,
        [&]
        {
            std::this_thread::sleep_for(seconds(1));
            folder.Make("file.go", "");
        });
    const Job second = Job::Exclusive(path);
    EXPECT_EQ(second.Error(), PROF_OK);
    EXPECT_GE(Clock::now() - start, seconds(1));
    EXPECT_EQ(LetterOfWhole(second), "z");
    release.get();
    EXPECT_EQ(holder.Wait(), 0);
}

TEST(ProfileProcesses, SavesOfTwoProcessesNeverMix)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    MakeFile(path);
    PeerProcess a(L"profile_peer", Line("save", path, "a 40"));
    PeerProcess b(L"profile_peer", Line("save", path, "b 40"));
    ExpectWholeContents(path, {&a, &b});
}

TEST(ProfileProcesses, ReaderDuringASaveInPlaceSeesOldOrNew)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    MakeFile(path);
    PeerProcess writer(L"profile_peer", Line("rewrite", path, "200"));
    ExpectWholeContents(path, {&writer});
}
