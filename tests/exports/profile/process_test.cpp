// Two processes that share a profile.
#include "exports/profile/whole_content.h"
#include "support/peer_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <initializer_list>
#include <list>
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
    return Wide(command + " \"" + path + "\" " + rest);
}

class ProfileProcesses : public testing::Test
{
protected:
    void SetUp() override
    {
        const Job job;
        FillWhole(job, 'z', 10);
        ASSERT_EQ(job.Save(path), PROF_OK);
    }

    // Runs peers that write to the file, and reads the file until they are done. Each read must return complete
    // contents.
    void ExpectWholeContents(const std::string& command, std::initializer_list<const char*> arguments) const
    {
        const auto work = std::async(std::launch::async,
            [&]
            {
                std::list<PeerProcess> peers;
                for (const char* const rest : arguments)
                    peers.emplace_back(L"profile_peer", Line(command, path, rest));
                for (PeerProcess& peer : peers)
                    EXPECT_EQ(peer.Wait(), 0);
            });
        for (bool isDone = false; !isDone;)
        {
            isDone = work.wait_for(seconds(0)) == std::future_status::ready;
            const Job job(path);
            EXPECT_EQ(job.Error(), PROF_OK);
            EXPECT_EQ(LetterOfWhole(job).size(), 1u) << LetterOfWhole(job);
        }
    }

    const TempFolder folder;
    const std::string path = folder.Path("file");
};

} // namespace

TEST_F(ProfileProcesses, ExclusiveJobLetsReadersInAndKeepsWritersOut)
{
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

TEST_F(ProfileProcesses, SavesOfTwoProcessesNeverMix)
{
    ExpectWholeContents("save", {"a 40", "b 40"});
}

TEST_F(ProfileProcesses, ReaderDuringASaveInPlaceSeesOldOrNew)
{
    ExpectWholeContents("rewrite", {"200"});
}
