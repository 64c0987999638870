#include "files/file.h"

#include "core/ticks.h"
#include "files/name_check.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/fake_stream.h"
#include "support/filled.h"
#include "support/temp_folder.h"
#include "unit/files/opened.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

// Makes each attempt to open a file fail with an error given by the test. The last attempt succeeds if the test
// provides a handle.
class ScriptedFile : public clsFileRW
{
public:
    std::vector<DWORD> errors;
    HANDLE handle = nullptr;
    using Call = std::array<DWORD, 4>; // access, share, disposition, flags
    std::vector<Call> calls;

protected:
    HANDLE CreateHandle(const String&, DWORD access, DWORD share, DWORD disposition, DWORD flags) override
    {
        calls.push_back({access, share, disposition, flags});
        if (calls.size() > errors.size())
            return handle;
        SetLastError(errors[calls.size() - 1]);
        return INVALID_HANDLE_VALUE;
    }
};

} // namespace

TEST(NameCheck, Devices)
{
    for (const wchar_t* name :
        {L"con", L"Aux .tar.gz", L"NUL.", L"prn  ", L"lpt\u00B3.a", L"com9", L"conin$", L"CONOUT$.x"})
        EXPECT_TRUE(IsDeviceName(name)) << testing::PrintToString(name);
    for (const wchar_t* name : {L"", L".con", L" con", L"conx", L"con_.txt", L"com0", L"com10", L"com", L"xpt1"})
        EXPECT_FALSE(IsDeviceName(name)) << testing::PrintToString(name);
}

TEST(NameCheck, LooksAtTheLastComponent)
{
    for (const wchar_t* name :
        {L"dir\\a.txt", L"CON/a.txt", L"COM0", L"LPT0.log", L"CON.a.b", // only one extension is removed
            L"con", L"nul.txt",                                         // case is significant
            L"CONX", L"XCON", L".a", L"a b.c d", L"\u00E4\u4E00"})
        EXPECT_TRUE(IsFileNameAllowed(name)) << testing::PrintToString(name);
    for (const wchar_t* name :
        {L"CON", L"dir\\CON", L"dir/NUL.txt", L"PRN.a", L"AUX", L"COM1", L"COM9.log", L"LPT1.log", L"", L"dir/",
            L"dir\\", L"a.", L"a ", L"a<b", L"a>b", L"a\"b", L"a|b", L"a?b", L"a*", L"a:b:c", L"a\x01z", L"a\tb"})
        EXPECT_FALSE(IsFileNameAllowed(name)) << testing::PrintToString(name);
    EXPECT_TRUE(IsFileNameAllowed(Filled(L'x', 255)));
    EXPECT_FALSE(IsFileNameAllowed(Filled(L'x', 256)));

    ScriptedFile file;
    EXPECT_EQ(file.Open(L"CON", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), -1);
    EXPECT_TRUE(file.calls.empty());
    EXPECT_EQ(file.GetErrorKind(), FileError::NameRefused);
    EXPECT_STREQ(file.GetErrorText().Text(), L"file name is reserved by Windows");
}

TEST(FileOpen, GivesTheSystemItsArguments)
{
    const std::tuple<FileAccess, FileDisposition, FileShare, std::uint32_t, ScriptedFile::Call> cases[] = {
        {FileAccess::Read, FileDisposition::OpenExisting, FileShare::None, 0, {GENERIC_READ, 0, OPEN_EXISTING, 0}},
        {FileAccess::Write, FileDisposition::OpenAlways, FileShare::Read, 0x10F,
            {GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS,
                FILE_FLAG_WRITE_THROUGH | FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_DELETE_ON_CLOSE |
                    FILE_FLAG_RANDOM_ACCESS | FILE_ATTRIBUTE_NORMAL}},
        {FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::ReadWrite, 0xE00,
            {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS,
                FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_TEMPORARY}},
        {FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::Exclusive, kFileData,
            {GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL}}};
    for (const auto& [access, disposition, share, flags, call] : cases)
    {
        ScriptedFile file;
        file.Open(L"x", access, disposition, share, flags);
        ASSERT_EQ(file.calls.size(), 3U);
        EXPECT_EQ(file.calls[0], call) << flags;
    }
}

TEST(FileOpen, MissingFile)
{
    const TempFolder folder;
    const String path = folder.Path(L"none");
    const DebugLines lines;
    Reader file(path);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetErrorKind(), FileError::PathNotFound);
    EXPECT_EQ(file.GetErrorText(), String::SystemErrorText(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(lines.Count(), 0U);
    {
        const qxtest::UserIs developer(L"QvX");
        Reader again(path);
    }
    const String expected(
        String::kFormatted, L"clsFile::Open('%s') failed: '%s'", path.Text(), file.GetErrorText().Text());
    EXPECT_STREQ(lines.Only().Text(), expected.Text());

    folder.Make(L"none", "x");
    EXPECT_EQ(file.Open(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), 0);
    EXPECT_EQ(file.GetErrorKind(), FileError::None);
    EXPECT_TRUE(file.GetErrorText().IsEmpty());
}

TEST(FileOpen, TriesThreeTimesAndWaitsOnlyForTemporaryFiles)
{
    const std::tuple<std::vector<DWORD>, std::uint32_t, FileError, bool> cases[] = {
        {{32, 33, 32, 32}, kFileAttributeTemporary, FileError::InUse, true},
        {{32, 32, 32}, kFileAttributeNormal, FileError::InUse, false},
        {{5, 5, 5}, kFileAttributeTemporary, FileError::AccessDenied, false},
        {{5, 5, 3}, kFileAttributeNormal, FileError::PathNotFound, false}};
    for (const auto& [errors, flags, kind, waits] : cases)
    {
        // On a busy machine some of the attempts may take long, but not all.
        ULONGLONG shortest = ~0ULL;
        for (int i = 0; i < 5; ++i)
        {
            ScriptedFile file;
            file.errors = errors;
            const ULONGLONG start = GetTickCount64();
            EXPECT_EQ(file.Open(L"x", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, flags), -1);
            shortest = std::min(shortest, GetTickCount64() - start);
            EXPECT_EQ(file.calls.size(), 3U);
            EXPECT_EQ(file.GetErrorKind(), kind);
            EXPECT_EQ(GetLastError(), errors[2]);
        }
        EXPECT_EQ(shortest >= 280, waits) << shortest;
    }
}

TEST(FileOpen, SucceedsAtALaterAttempt)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "bytes");
    ScriptedFile file;
    file.errors = {32, 32};
    file.handle = OpenToRead(path);
    EXPECT_EQ(file.Open(L"x", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), 0);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.calls.size(), 3U);
    EXPECT_EQ(file.GetSize(), 5);
    file.Close();

    file.handle = OpenToRead(path);
    {
        clsFile adopted(file.handle);
        EXPECT_EQ(adopted.GetSize(), 5);
    }
    EXPECT_TRUE(DeleteFileW(path.Text()));
    EXPECT_FALSE(clsFile(INVALID_HANDLE_VALUE).IsOpen());
}

TEST(FileClose, ReopeningClosesFirstAndDeletesWhatWasOpenedForThat)
{
    const TempFolder folder;
    const String a = folder.Path(L"a");
    Writer file(a, FileDisposition::CreateAlways, kFileData | kFileDeleteOnClose);
    EXPECT_TRUE(Exists(a));
    const String b = folder.Make(L"b", "bb");
    EXPECT_EQ(file.Open(b, FileAccess::Read, FileDisposition::OpenExisting, FileShare::None, kFileData), 0);
    EXPECT_FALSE(Exists(a));
    EXPECT_EQ(file.GetSize(), 2);
}

TEST(FileLock, HoldsUntilItIsGivenBack)
{
    const TempFolder folder;
    const String path = folder.Make(L"locked", "0123456789");
    // Returns true if another object could lock the range. The layer's tests cover locks between processes.
    const auto isFree = [&path](DWORD offset, DWORD length)
    {
        Reader other(path, FileShare::ReadWrite);
        return LockFile(other.GetHandle(), offset, 0, length, 0) != FALSE;
    };
    Reader file(path, FileShare::ReadWrite);
    const auto lock = file.Lock(4, 2);
    ASSERT_TRUE(lock && file.Lock(1000, 1)); // also past the end
    EXPECT_FALSE(isFree(5, 1));
    EXPECT_TRUE(isFree(6, 4) && isFree(0, 4));
    file.Unlock(lock);
    EXPECT_TRUE(isFree(4, 2));
    EXPECT_FALSE(isFree(1000, 1));
    file.Close(); // releases the remaining locks
    EXPECT_TRUE(isFree(1000, 1));
}

TEST(StreamLock, StreamWithoutLocksCountsAsLocked)
{
    for (const HRESULT answer : {STG_E_INVALIDFUNCTION, E_NOTIMPL})
    {
        FakeStream stream;
        stream.lockResult = answer;
        clsFile file(&stream);
        const DebugLines lines;
        const auto lock = file.Lock(0, 1);
        EXPECT_EQ(stream.lockTries, 1);
        EXPECT_TRUE(lock);
        file.Unlock(lock);
        EXPECT_EQ(lines.Count(), 0U);
    }
}

TEST(StreamLock, GivesUpAfterTenSeconds)
{
    FakeStream stream;
    stream.lockResult = STG_E_LOCKVIOLATION;
    clsFile file(&stream);
    static unsigned long long ticks = 0; // in milliseconds
    DecideTickSource([] { return ticks += 50; });
    EXPECT_FALSE(file.Lock(0, 1));
    DecideTickSource(GetTickCount64);
    EXPECT_GE(ticks, 10'000U);
    EXPECT_LT(ticks, 11'000U);
    EXPECT_GE(stream.lockTries, 3);
}

// Locks are identified by their range, so two equal ones can be released once each.
TEST(StreamLock, EqualRangesAreGivenBackOneByOneAndTheRestAtTheEnd)
{
    FakeStream stream;
    const DebugLines lines;
    {
        clsFile file(&stream);
        const auto first = file.Lock(0, 1), second = file.Lock(0, 1);
        file.Lock(5, 2);
        file.Unlock(second);
        file.Unlock(second);
        file.Unlock(std::nullopt);
        EXPECT_EQ(stream.locks, 1);
        EXPECT_EQ(lines.Count(), 0U);
        file.Unlock(first);
        EXPECT_EQ(stream.locks, 0) << "the stream is asked all the same";
        EXPECT_STREQ(lines.Only(),
            L"\nFile '(Stream)': tried to unlock a lock that has already been removed (or has never existed)\n");
        stream.locks = 1;
    }
    EXPECT_EQ(stream.locks, 0);
    EXPECT_STREQ(
        lines.Last(), L"portions of the file '(Stream)' are still locked. they will be unlocked automatically...");
}
