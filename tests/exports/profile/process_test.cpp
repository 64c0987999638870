// Two processes that share a profile.
#include "exports/profile/whole_content.h"
#include "support/peer_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <set>
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

// Reads the file until the peer is done. Returns the letters of all complete contents that were read.
std::set<std::string> ReadMeanwhile(const std::string& path, const std::future<int>& work)
{
    std::set<std::string> letters;
    do
    {
        const Job job(path);
        EXPECT_EQ(job.Error(), PROF_OK);
        letters.insert(LetterOfWhole(job));
    } while (work.wait_for(seconds(0)) != std::future_status::ready);
    return letters;
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
    const auto work = std::async(std::launch::async, [&] { return a.Wait() + b.Wait(); });
    std::set<std::string> letters = ReadMeanwhile(path, work);
    letters.insert(LetterOfWhole(Job(path)));
    for (const std::string& letter : letters)
        EXPECT_EQ(letter.size(), 1u) << letter;
    EXPECT_EQ(a.Wait(), 0);
    EXPECT_EQ(b.Wait(), 0);
}

TEST(ProfileProcesses, ReaderDuringASaveInPlaceSeesOldOrNew)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    MakeFile(path);
    PeerProcess writer(L"profile_peer", Line("rewrite", path, "200"));
    const auto work = std::async(std::launch::async, [&] { return writer.Wait(); });
    for (const std::string& letter : ReadMeanwhile(path, work))
        EXPECT_EQ(letter.size(), 1u) << letter;
    EXPECT_EQ(writer.Wait(), 0);
    EXPECT_EQ(LetterOfWhole(Job(path)).size(), 1u);
}
