#include "files/file.h"

#include "support/debug_lines.h"
#include "support/fake_stream.h"
#include "support/peer_process.h"
#include "support/temp_folder.h"
#include "unit/files/opened.h"

#include <gtest/gtest.h>

using namespace qx;
using qxtest::DebugLines;
using qxtest::FakeStream;
using qxtest::PeerProcess;
using qxtest::Reader;
using qxtest::TempFolder;

namespace
{

constexpr wchar_t kAlreadyRemoved[] = L"tried to unlock a lock that has already been removed (or has never existed)";

class FileLock : public testing::Test
{
protected:
    int LockInPeer(int offset, int length)
    {
        return PeerProcess(String(String::formatted, L"\"%s\" %d %d", _path.Text(), offset, length)).Wait();
    }

    TempFolder _folder;
    String _path = _folder.Make(L"locked", "0123456789");
};

} // namespace

TEST_F(FileLock, HoldsBetweenProcesses)
{
    Reader file(_path, FileShare::ReadWrite);
    const auto lock = file.Lock(4, 2);
    ASSERT_TRUE(lock);
    EXPECT_EQ(LockInPeer(5, 1), 1);
    EXPECT_EQ(LockInPeer(6, 4), 0);
    EXPECT_EQ(LockInPeer(0, 4), 0);
    const auto behindTheEnd = file.Lock(1000, 1);
    ASSERT_TRUE(behindTheEnd);
    file.Unlock(lock);
    EXPECT_EQ(LockInPeer(4, 2), 0);
    EXPECT_EQ(LockInPeer(1000, 1), 1);
    file.Close(); // gives the rest back
    EXPECT_EQ(LockInPeer(1000, 1), 0);
}

TEST_F(FileLock, WaitsForAnotherProcess)
{
    const String ready = _folder.Path(L"ready");
    PeerProcess holder(String(String::formatted, L"\"%s\" 0 1 3000 \"%s\"", _path.Text(), ready.Text()));
    ASSERT_TRUE(holder.IsStarted());
    for (int i = 0; i < 2000 && !qxtest::Exists(ready); ++i)
        Sleep(10);
    ASSERT_TRUE(qxtest::Exists(ready));
    Reader file(_path, FileShare::ReadWrite);
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(file.Lock(0, 1));
    EXPECT_GE(GetTickCount64() - start, 100U);
    EXPECT_EQ(holder.Wait(), 0);
}

TEST(StreamLock, StreamWithoutLocksCountsAsLocked)
{
    for (const HRESULT answer : {STG_E_INVALIDFUNCTION, E_NOTIMPL})
    {
        FakeStream stream;
        stream.lockResult = answer;
        clsFile file(&stream);
        const auto lock = file.Lock(0, 1);
        EXPECT_EQ(stream.lockTries, 1);
        ASSERT_TRUE(lock);
        const DebugLines lines;
        file.Unlock(lock);
        EXPECT_EQ(lines.Count(), 0U);
    }
}

TEST(StreamLock, GivesUpAfterTenSeconds)
{
    FakeStream stream;
    stream.lockResult = STG_E_LOCKVIOLATION;
    clsFile file(&stream);
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(file.Lock(0, 1));
    EXPECT_GE(GetTickCount64() - start, 10000U);
    EXPECT_GE(stream.lockTries, 3);
}

// A record is told by its range, so of two equal ones each can be given back once.
TEST(StreamLock, EqualRangesAreGivenBackOneByOne)
{
    FakeStream stream;
    clsFile file(&stream);
    const auto first = file.Lock(0, 1);
    const auto second = file.Lock(0, 1);
    file.Lock(5, 2);
    EXPECT_EQ(stream.locks, 3);
    const DebugLines lines;
    file.Unlock(second);
    file.Unlock(second);
    file.Unlock(std::nullopt);
    EXPECT_EQ(stream.locks, 1);
    EXPECT_EQ(lines.Count(), 0U);
    file.Unlock(first);
    EXPECT_EQ(stream.locks, 0) << "the stream is asked all the same";
    EXPECT_EQ(lines.Only(), String(L"\nFile '(Stream)': ") + kAlreadyRemoved + L"\n");
}

TEST(StreamLock, DestructionUnlocksWhatIsLeft)
{
    FakeStream stream;
    const DebugLines lines;
    {
        clsFile file(&stream);
        file.Lock(0, 1);
        file.Lock(7, 2);
    }
    EXPECT_EQ(stream.locks, 0);
    EXPECT_STREQ(lines.Only().Text(),
        L"portions of the file '(Stream)' are still locked. they will be unlocked automatically...");
}
