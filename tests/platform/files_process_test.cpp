// Guarantees between processes: sharing modes, byte locks, the end of a process. The second process is this program.
#include "peer.h"
#include "support/run_in_threads.h"

#include <algorithm>
#include <memory>

using namespace qxtest;

namespace
{

class FilesBetweenProcesses : public testing::Test
{
protected:
    FilesBetweenProcesses() { MakeFile(path, "0123456789"); }

    const Folder folder;
    const Text path = folder / L"file";
};

TEST_F(FilesBetweenProcesses, NothingIsLeftOfAProcessThatIsKilled)
{
    Peer peer("lock", path, kReadWrite, 0);
    ASSERT_TRUE(peer.WaitUntilReady());
    EXPECT_EQ(OpenError(path, GENERIC_READ, kShareAll), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(peer.Kill(77), 77u);
    const Handle file = Open(path, kReadWrite, 0);
    EXPECT_TRUE(LockFile(file, 0, 0, 10, 0));
}

TEST_F(FilesBetweenProcesses, ByteLocksHold)
{
    // Locks are taken through handles with and without write access. Locks of both kinds exclude each other.
    for (const auto& [access, access2] : {std::pair<DWORD, DWORD>(GENERIC_READ, kReadWrite), {kReadWrite, GENERIC_READ},
             {GENERIC_READ, GENERIC_READ}, {kReadWrite, kReadWrite}})
    {
        SCOPED_TRACE(testing::Message() << std::hex << access << " then " << access2);
        Peer peer("lock", path, access, kShareAll); // locks bytes 2 to 4
        ASSERT_TRUE(peer.WaitUntilReady());
        const Handle file = Open(path, access2, kShareAll);
        ASSERT_TRUE(file);
        EXPECT_ERROR(ERROR_LOCK_VIOLATION, LockFile(file, 0, 0, 10, 0));
        EXPECT_ERROR(ERROR_LOCK_VIOLATION, LockFile(file, 4, 0, 1, 0));
        EXPECT_TRUE(LockFile(file, 0, 0, 2, 0));
        EXPECT_TRUE(LockFile(file, 5, 0, 0xFFFFFFFF, 0xFFFFFFFF - 1)) << "up to the last offset";
        EXPECT_TRUE(UnlockFile(file, 0, 0, 2, 0));
        if (kIsLayer && access == kReadWrite && access2 == kReadWrite) // Wine doesn't refuse these transfers
        {
            EXPECT_EQ(ReadBytes(file, 10), "error " + std::to_string(ERROR_LOCK_VIOLATION));
            EXPECT_EQ(ReadBytes(file, 2), "01") << "before the locked bytes";
            EXPECT_FALSE(WriteBytes(file, "x"));
        }
        peer.Kill(0);
        EXPECT_TRUE(LockFile(file, 0, 0, 5, 0));
    }
}

// Many processes repeatedly open the same file exclusively at the same time, or lock it (two with write access, two
// read-only). The final sum shows that each increment was made under exclusive access.
TEST_F(FilesBetweenProcesses, OnlyOneOfManyGetsTheFileOrTheLock)
{
    constexpr DWORD kRounds = 150;
    for (const char* const task : {"count", "countlocked"})
    {
        const Text counter = folder / Text::Widen(task);
        MakeFile(counter, "0");
        std::vector<std::unique_ptr<Peer>> peers;
        for (const DWORD access : {kReadWrite, DWORD{GENERIC_READ}, kReadWrite, DWORD{GENERIC_READ}})
            peers.push_back(std::make_unique<Peer>(task, counter, access, kRounds));
        for (const auto& peer : peers)
            EXPECT_EQ(peer->WaitForEnd(), 0u);
        EXPECT_EQ(BytesOf(counter), std::to_string(peers.size() * kRounds));
    }
}

// If two callers open an unused file at the same moment, exactly one succeeds: no open is refused without reason.
TEST_F(FilesBetweenProcesses, OneOfTwoAlwaysGetsTheFile)
{
    constexpr int kRounds = kIsLayer ? 5000 : 200;
    std::atomic<int> arrivals = 0;
    // Spins, so that both threads continue as simultaneously as possible.
    const auto meet = [&arrivals](int meeting)
    {
        ++arrivals;
        for (int turn = 0; arrivals < 2 * meeting; ++turn)
            if (turn > 1000)
                std::this_thread::yield();
    };
    std::atomic<int> winners[kRounds] = {};
    RunInThreads(2,
        [&](unsigned)
        {
            for (int round = 0; round < kRounds; ++round)
            {
                meet(3 * round + 1);
                Handle file = Open(path, kReadWrite, FILE_SHARE_READ);
                winners[round] += file ? 1 : 0;
                meet(3 * round + 2); // kept open until the other thread has tried
                file.Close();
                meet(3 * round + 3);
            }
        });
    EXPECT_TRUE(std::all_of(std::begin(winners), std::end(winners), [](int count) { return count == 1; }));
}

} // namespace
