// Drives that are connected to shares by links on linux.
#include "accounts/connection_list.h"
#include "accounts/file_users.h"
#include "accounts/path_forms.h"
#include "support/filled.h"
#include "support/own_drives.h"
#include "unit/accounts/fake_server.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

using Ensure = bool (*)(const String&, String&);

String Changed(Ensure ensure, const wchar_t* path)
{
    String result = L"(unchanged)";
    return ensure(path, result) ? result : String(L"failed: ") + result;
}

} // namespace

TEST(ConnectedDrives, PathForms)
{
    const OwnDrives drives;
    drives.Link("q:", "unc/Server/Share");
    drives.Link("r:", "unc/server/share"); // if a share has several drives, the first one is used
    const std::string longServer(600, 's');
    drives.Link("l:", "unc/" + longServer + "/share"); // its universal names need a larger block
    const String longName = Filled(L'n', 200);
    constexpr std::tuple<Ensure, const wchar_t*, const wchar_t*> kCases[] = {
        {EnsureLocalPath, L"\\\\server\\share", L"Q:"}, {EnsureLocalPath, L"\\\\SERVER\\share\\", L"Q:\\"},
        {EnsureLocalPath, L"\\\\server\\SHARE\\a\\..\\B", L"Q:\\B"},
        {EnsureLocalPath, L"\\\\server\\shares\\a", L"\\\\server\\shares\\a"},
        {EnsureLocalPath, L"Q:\\a\\.\\b", L"Q:\\a\\b"}, {EnsureLocalPath, L"q:a", L"q:\\a"},
        {EnsureLocalPath, L"/a/../b", L"/b"}, {EnsureLocalPath, L"\\\\server", L"\\\\server"},
        {EnsureLocalPath, L"", L""}, {EnsureUNCPath, L"q:\\a\\.\\b", L"\\\\Server\\Share\\a\\b"},
        {EnsureUNCPath, L"Q:", L"\\\\Server\\Share\\"}, {EnsureUNCPath, L"C:\\x", L"failed: (unchanged)"},
        {EnsureUNCPath, L"\\\\other\\share\\.\\a", L"\\\\other\\share\\a"}, {EnsureUNCPath, L"/a/b", L"/a/b"},
        {EnsureUNCPath, L"Z:\\a\\b", L"/a/b"}};
    for (const auto& [ensure, path, expected] : kCases)
        EXPECT_STREQ(Changed(ensure, path), expected) << String(path).NarrowText();
    EXPECT_STREQ(Changed(EnsureUNCPath, String(L"L:\\") + longName),
        String(L"\\\\") + Filled(L's', 600) + L"\\share\\" + longName);
}

TEST(ConnectedDrives, FilesOnThemAreLookedUpOnTheServer)
{
    const OwnDrives drives;
    std::ofstream(drives.MakeShare("server", "share") / "a.txt") << "data";
    drives.Link("q:", "unc/server/share");
    const std::tuple<const wchar_t*, std::uint32_t, std::size_t> cases[] = {{L"Q:\\a.txt", PERM_FILE_WRITE, 1},
        {L"q:b/../a.txt", PERM_FILE_WRITE, 1}, {L"Q:\\missing", 0, 1}, {L"C:\\a.txt", 0, 0}}; // C: isn't connected
    for (const auto& [path, access, calls] : cases)
    {
        FakeServer server({{NERR_Success, {OpenFile(L"C:\\share\\a.txt", L"ann", PERM_FILE_WRITE)}}});
        FileUsers found;
        EXPECT_EQ(GetFileInfoAccess(path, server, found), FileUsersResult::Done);
        EXPECT_EQ(server.calls, calls);
        EXPECT_EQ(found.access, access);
    }
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
