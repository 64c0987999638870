#include "files/file.h"

#include "files/name_check.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/peer_process.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace qx;
using qxtest::DebugLines;
using qxtest::TempFolder;

namespace
{

// Answers each attempt of an open with an error of the test's choice, and the last with a handle if there is one.
class ScriptedFile : public clsFileRW
{
public:
    std::vector<DWORD> errors;
    HANDLE handle = nullptr;
    struct Call
    {
        DWORD access, share, disposition, flags;
    };
    std::vector<Call> calls;

protected:
    HANDLE CreateHandle(const String&, DWORD access, DWORD share, DWORD disposition, DWORD flags) override
    {
        const size_t attempt = calls.size();
        calls.push_back({access, share, disposition, flags});
        if (attempt >= errors.size())
        {
            return handle;
        }
        SetLastError(errors[attempt]);
        return INVALID_HANDLE_VALUE;
    }
};

String OpenArguments(const String& path, int access, int disposition, int share)
{
    return String(String::formatted, L"open \"%s\" %d %d %d", path.Text(), access, disposition, share);
}

} // namespace

TEST(NameCheck, LooksAtTheLastComponent)
{
    const struct
    {
        const wchar_t* name;
        bool allowed;
    } cases[] = {
        {L"a.txt", true},
        {L"dir\\a.txt", true},
        {L"dir/a.txt", true},
        {L"CON/a.txt", true},
        {L"CON", false},
        {L"dir\\CON", false},
        {L"dir/NUL.txt", false},
        {L"PRN.a", false},
        {L"AUX", false},
        {L"COM1", false},
        {L"COM9.log", false},
        {L"COM0", true},
        {L"LPT1.log", false},
        {L"LPT0.log", true},
        {L"con", true}, // case counts
        {L"nul.txt", true},
        {L"CON.a.b", true}, // one extension only
        {L"CONX", true},
        {L"XCON", true},
        {L"", false},
        {L"dir/", false},
        {L"dir\\", false},
        {L"a.", false},
        {L"a ", false},
        {L".a", true},
        {L"a b.c d", true},
        {L"a<b", false},
        {L"a>b", false},
        {L"a\"b", false},
        {L"a|b", false},
        {L"a?b", false},
        {L"a*", false},
        {L"a:b:c", false},
        {L"a\x01z", false},
        {L"a\tb", false},
        {L"\u00E4\u4E00", true},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(IsFileNameAllowed(c.name), c.allowed) << testing::PrintToString(c.name);
    }
    String longName;
    longName.Fill(L'x', 255);
    EXPECT_TRUE(IsFileNameAllowed(longName));
    EXPECT_FALSE(IsFileNameAllowed(longName + L"x"));
}

TEST(FileOpen, GivesTheSystemItsArguments)
{
    ScriptedFile file;
    file.Open(L"x", FileAccess::Read, FileDisposition::OpenExisting, FileShare::None, 0);
    file.Open(L"x", FileAccess::Write, FileDisposition::OpenAlways, FileShare::Read, 0x10F);
    file.Open(L"x", FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::ReadWrite, 0xE00);
    file.Open(L"x", FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::Exclusive, kFileData);
    const struct
    {
        DWORD access, share, disposition, flags;
    } expected[] = {
        {GENERIC_READ, 0, OPEN_EXISTING, 0},
        {GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS,
            FILE_FLAG_WRITE_THROUGH | FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS |
                FILE_ATTRIBUTE_NORMAL},
        {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS,
            FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_TEMPORARY},
        {GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL},
    };
    ASSERT_EQ(file.calls.size(), 12U); // three attempts each
    for (size_t i = 0; i < std::size(expected); ++i)
    {
        const ScriptedFile::Call& call = file.calls[3 * i];
        EXPECT_EQ(call.access, expected[i].access);
        EXPECT_EQ(call.share, expected[i].share);
        EXPECT_EQ(call.disposition, expected[i].disposition);
        EXPECT_EQ(call.flags, expected[i].flags);
    }
}

TEST(FileOpen, MissingFile)
{
    const TempFolder folder;
    clsFile file;
    EXPECT_EQ(
        file.Open(folder.Path(L"none"), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData),
        -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetErrorKind(), FileError::PathNotFound);
    EXPECT_EQ(file.GetErrorText(), String::SystemErrorText(ERROR_FILE_NOT_FOUND));

    const String existing = folder.Make(L"there", "x");
    EXPECT_EQ(file.Open(existing, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), 0);
    EXPECT_EQ(file.GetErrorKind(), FileError::None);
    EXPECT_TRUE(file.GetErrorText().IsEmpty());
}

TEST(FileOpen, RefusedNameIsNotTried)
{
    ScriptedFile file;
    EXPECT_EQ(file.Open(L"CON", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), -1);
    EXPECT_TRUE(file.calls.empty());
    EXPECT_EQ(file.GetErrorKind(), FileError::NameRefused);
    EXPECT_STREQ(file.GetErrorText().Text(), L"file name is reserved by Windows");
}

TEST(FileOpen, TriesThreeTimesAndWaitsOnlyForTemporaryFiles)
{
    const struct
    {
        std::vector<DWORD> errors;
        uint32_t flags;
        FileError kind;
        bool waits;
    } cases[] = {
        {{32, 33, 32, 32}, kFileAttributeTemporary, FileError::InUse, true},
        {{32, 32, 32}, kFileAttributeNormal, FileError::InUse, false},
        {{5, 5, 5}, kFileAttributeTemporary, FileError::AccessDenied, false},
        {{5, 5, 3}, kFileAttributeNormal, FileError::PathNotFound, false},
    };
    for (const auto& c : cases)
    {
        // On a busy machine any of them may take long, but not all.
        ULONGLONG shortest = ~0ULL;
        for (int i = 0; i < 5; ++i)
        {
            ScriptedFile file;
            file.errors = c.errors;
            const ULONGLONG start = GetTickCount64();
            EXPECT_EQ(file.Open(L"x", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, c.flags), -1);
            shortest = std::min(shortest, GetTickCount64() - start);
            EXPECT_EQ(file.calls.size(), 3U);
            EXPECT_EQ(file.GetErrorKind(), c.kind);
            EXPECT_EQ(GetLastError(), c.errors[2]);
        }
        EXPECT_EQ(shortest >= 280, c.waits) << shortest;
    }
}

TEST(FileOpen, SucceedsAtALaterAttempt)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "bytes");
    ScriptedFile file;
    file.errors = {32, 32};
    file.handle = CreateFileW(path.Text(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_EQ(file.Open(L"x", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData), 0);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.calls.size(), 3U);
    EXPECT_EQ(file.GetSize(), 5);
}

TEST(FileOpen, LogsFailuresInDevelopersRuns)
{
    const TempFolder folder;
    const String path = folder.Path(L"none");
    const auto open = [&]
    {
        clsFile(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    };
    const DebugLines lines;
    open();
    EXPECT_EQ(lines.Count(), 0U);

    const qxtest::UserIs developer(L"QvX");
    open();
    const String expected(String::formatted, L"clsFile::Open('%s') failed: '%s'", path.Text(),
        String::SystemErrorText(ERROR_FILE_NOT_FOUND).Text());
    EXPECT_STREQ(lines.Only().Text(), expected.Text());
}

TEST(FileOpen, ReopeningClosesFirst)
{
    const TempFolder folder;
    const String a = folder.Make(L"a", "a");
    const String b = folder.Make(L"b", "bb");
    clsFile file(a, FileAccess::ReadWrite, FileDisposition::OpenExisting, FileShare::None, kFileData);
    EXPECT_EQ(file.Open(b, FileAccess::Read, FileDisposition::OpenExisting, FileShare::None, kFileData), 0);
    EXPECT_EQ(file.GetSize(), 2);
    EXPECT_TRUE(DeleteFileW(a.Text()));
}

TEST(FileOpen, SharingHoldsBetweenProcesses)
{
    const TempFolder folder;
    const String path = folder.Make(L"shared", "x");
    const struct
    {
        int access, share;           // of this process
        int otherAccess, otherShare; // of the other
        int kind;
    } cases[] = {
        {0, 2, 0, 2, 0}, // two readers
        {0, 2, 0, 3, 0},
        {0, 2, 2, 3, 2}, // a reader who admits readers only
        {2, 3, 0, 3, 0},
        {2, 3, 0, 2, 2}, // a writer is there, whom the other doesn't admit
        {2, 2, 0, 3, 0},
        {2, 2, 2, 3, 2},
        {2, 3, 2, 3, 0},
        {2, 0, 0, 3, 2},
        {0, 1, 0, 3, 2},
    };
    for (const auto& c : cases)
    {
        clsFile file(path, static_cast<FileAccess>(c.access), FileDisposition::OpenExisting,
            static_cast<FileShare>(c.share), kFileData);
        ASSERT_TRUE(file.IsOpen());
        qxtest::PeerProcess peer(OpenArguments(path, c.otherAccess, 0, c.otherShare));
        EXPECT_EQ(peer.Wait(), c.kind) << c.access << c.share << c.otherAccess << c.otherShare;
    }
    EXPECT_EQ(qxtest::PeerProcess(OpenArguments(path, 2, 0, 0)).Wait(), 0);
}

TEST(FileClose, DeletesWhatWasOpenedForThat)
{
    const TempFolder folder;
    const String path = folder.Path(L"passing");
    {
        clsFileRW file(path, FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::None,
            kFileData | kFileDeleteOnClose);
        EXPECT_TRUE(file.IsOpen());
        EXPECT_TRUE(qxtest::Exists(path));
    }
    EXPECT_FALSE(qxtest::Exists(path));
}

TEST(FileClose, AdoptedHandleIsClosed)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "abc");
    const HANDLE handle =
        CreateFileW(path.Text(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    {
        clsFile file(handle);
        EXPECT_TRUE(file.IsOpen());
        EXPECT_TRUE(file.GetName().IsEmpty());
        EXPECT_EQ(file.GetSize(), 3);
    }
    EXPECT_TRUE(DeleteFileW(path.Text()));

    clsFile none(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(none.IsOpen());
}
