// Kills processes at random moments while they save a profile. The file must contain the old or the new contents.
#include "exports/profile/whole_content.h"
#include "faults/rounds.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace profiletest;

namespace
{

// Starts the peer program of the profile tests, which is in the folder of this program.
pid_t StartPeer(const std::vector<std::string>& arguments)
{
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "profile_peer";
    std::vector<char*> pointers{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        execv(program.c_str(), pointers.data());
        _exit(99);
    }
    return child;
}

} // namespace

TEST(SaveKills, LeaveTheOldOrTheNewContents)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    std::mt19937 random(std::random_device{}());
    const int rounds = faults::Rounds(30);
    int unfinished = 0;
    int started = 0;
    for (int round = 0; round < rounds; ++round)
    {
        const bool isNew = round % 4 == 3;
        if (isNew)
            std::filesystem::remove(path);
        else
        {
            const Job job;
            FillWhole(job, '0', 10);
            ASSERT_EQ(job.Save(path), PROF_OK);
        }
        const pid_t peer =
            round % 2 == 0 ? StartPeer({"rewrite", path, "1000000"}) : StartPeer({"save", path, "b", "1000000"});
        // In three of four rounds, waits until the first save has ended, so that the kill happens during a later one.
        // In the other rounds, the peer may only just have started.
        const auto patience = random() % 4 == 0 ? random() % 50 : 30000;
        for (unsigned waited = 0;
             waited < patience && (isNew ? !std::filesystem::exists(path) : LetterOfWhole(Job(path)) == "0"); ++waited)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        kill(peer, SIGKILL);
        int status = 0;
        waitpid(peer, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the peer ended by itself with " << WEXITSTATUS(status);

        if (std::filesystem::exists(path))
        {
            const Job job(path);
            ASSERT_EQ(job.Error(), PROF_OK) << round;
            const std::string letter = LetterOfWhole(job);
            ASSERT_EQ(letter.size(), 1u) << round << ": " << letter.substr(0, 200);
            started += letter != "0" ? 1 : 0;
        }
        else
            ASSERT_TRUE(isNew) << "the file has vanished";
        std::size_t others = 0;
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()))
            others += entry.path() != path ? 1 : 0;
        ASSERT_LE(others, 1u) << "what killed saves leave must not pile up";
        unfinished += others != 0 ? 1 : 0;
    }
    std::cout << rounds << " kills: " << started << " after a save had finished, " << unfinished
              << " with a new file unfinished or left from before\n";
    EXPECT_GT(started, rounds / 8) << "the kills came too early to prove anything";
}
