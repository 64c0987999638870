// Drives that are connected with shares, as links on linux.
#include "accounts/connection_list.h"
#include "accounts/file_users.h"
#include "accounts/path_forms.h"
#include "support/own_drives.h"
#include "unit/accounts/fake_server.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>

using namespace qx;
using qxtest::FakeServer;
using qxtest::OpenFile;
using qxtest::OwnDrives;

namespace
{

String Changed(bool (*ensure)(const String&, String&), const wchar_t* path)
{
    String result = L"(unchanged)";
    return ensure(path, result) ? result : String(L"failed: ") + result;
}

} // namespace

TEST(ConnectedDrives, LocalForms)
{
    const OwnDrives drives;
    drives.Link("q:", "unc/Server/Share");
    drives.Link("r:", "unc/server/share"); // the first drive of a share counts
    constexpr std::pair<const wchar_t*, const wchar_t*> kCases[] = {{L"\\\\server\\share", L"Q:"},
        {L"\\\\SERVER\\share\\", L"Q:\\"}, {L"\\\\server\\SHARE\\a\\..\\B", L"Q:\\B"},
        {L"\\\\server\\other\\a", L"\\\\server\\other\\a"}, {L"\\\\server\\shares\\a", L"\\\\server\\shares\\a"},
        {L"Q:\\a\\.\\b", L"Q:\\a\\b"}, {L"q:a", L"q:\\a"}, {L"/a/../b", L"/b"}, {L"\\\\server", L"\\\\server"},
        {L"", L""}};
    for (const auto& [path, local] : kCases)
        EXPECT_STREQ(Changed(EnsureLocalPath, path), local) << String(path).NarrowText();
}

TEST(ConnectedDrives, FormsOfShares)
{
    const OwnDrives drives;
    drives.Link("q:", "unc/server/share");
    String longName;
    longName.Fill(L'n', 200);
    const std::string longServer(600, 's');
    drives.Link("l:", "unc/" + longServer + "/share"); // its universal names need a larger block
    constexpr std::pair<const wchar_t*, const wchar_t*> kCases[] = {{L"q:\\a\\.\\b", L"\\\\server\\share\\a\\b"},
        {L"Q:/a", L"\\\\server\\share\\a"}, {L"Q:", L"\\\\server\\share\\"}, {L"C:\\x", L"failed: (unchanged)"},
        {L"\\\\other\\share\\.\\a", L"\\\\other\\share\\a"}, {L"/a/b", L"/a/b"}, {L"Z:\\a\\b", L"/a/b"}};
    for (const auto& [path, name] : kCases)
        EXPECT_STREQ(Changed(EnsureUNCPath, path), name) << String(path).NarrowText();
    String server;
    server.Assign(longServer.c_str());
    EXPECT_STREQ(
        Changed(EnsureUNCPath, String(L"L:\\") + longName), String(L"\\\\") + server + L"\\share\\" + longName);
}

TEST(ConnectedDrives, FilesOnThemAreLookedUpOnTheServer)
{
    const OwnDrives drives;
    std::ofstream(drives.MakeShare("server", "share") / "a.txt") << "data";
    drives.Link("q:", "unc/server/share");
    const std::pair<const wchar_t*, std::uint32_t> cases[] = {
        {L"Q:\\a.txt", PERM_FILE_WRITE}, {L"q:b/../a.txt", PERM_FILE_WRITE}, {L"Q:\\missing", 0}};
    for (const auto& [path, access] : cases)
    {
        FakeServer server({{NERR_Success, {OpenFile(L"C:\\share\\a.txt", L"ann", PERM_FILE_WRITE)}}});
        FileUsers found;
        EXPECT_EQ(GetFileInfoAccess(path, server, found), FileUsersResult::Done);
        EXPECT_EQ(server.calls, 1u);
        EXPECT_EQ(found.access, access);
    }
    FakeServer server({});
    FileUsers found;
    EXPECT_EQ(GetFileInfoAccess(L"C:\\a.txt", server, found), FileUsersResult::Done) << "not connected";
    EXPECT_EQ(server.calls, 0u);
}

TEST(ConnectedDrives, SmallBlocksGrowOnceAndAreReadOneByOne)
{
    const OwnDrives drives;
    for (const char* const drive : {"a:", "b:", "c:"})
        drives.Link(drive, "unc/server/share");
    RememberedConnection found;
    const auto isC = [](const RememberedConnection& one)
    {
        return one.drive == L"c:";
    };
    ConnectionList grown(8);
    ASSERT_TRUE(grown.IsOpen());
    EXPECT_TRUE(grown.ReadFirst());
    EXPECT_TRUE(grown.Find(isC, found));
    EXPECT_STREQ(found.share, L"\\\\server\\share");
    EXPECT_FALSE(grown.Find(isC, found));
    ConnectionList small(8);
    EXPECT_FALSE(small.Find(isC, found)) << "the block doesn't grow on its own";
}
