#include "accounts/file_users.h"

#include "support/debug_lines.h"
#include "unit/accounts/fake_server.h"

#include <qxut23/access.h>

#include <gtest/gtest.h>

#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr const wchar_t* kFile = L"\\\\server\\share\\a.txt";

} // namespace

TEST(FileUsers, UsersOfTheFileAreCollectedFromAllBlocks)
{
    FakeServer server({{ERROR_MORE_DATA, {OpenFile(L"C:\\share\\a.txt", L"ann", PERM_FILE_READ),
                                             OpenFile(L"C:\\other\\a.txt", L"x", PERM_FILE_WRITE)}},
        {ERROR_MORE_DATA,
            {OpenFile(L"d:\\share\\a.txt", L"bob", 0xF8 | PERM_FILE_CREATE), OpenFile(nullptr, L"x", PERM_FILE_WRITE)}},
        {NERR_Success,
            {OpenFile(L"\\share\\a.txt", L"x", PERM_FILE_WRITE), OpenFile(L"C:\\share\\a.txt", nullptr, PERM_FILE_READ),
                OpenFile(L"C:\\SHARE\\a.txt", L"x", PERM_FILE_WRITE),
                OpenFile(L"C:\\share\\a.txt", L"", PERM_FILE_READ),
                OpenFile(L"C:\\share\\a.txt.bak", L"x", PERM_FILE_WRITE)}}});
    FileUsers found;
    EXPECT_EQ(GetFileInfoAccess(kFile, server, found), FileUsersResult::Done);
    EXPECT_STREQ(server.server, L"\\\\server");
    EXPECT_EQ(found.access, std::uint32_t{PERM_FILE_READ | PERM_FILE_CREATE});
    EXPECT_STREQ(found.users, L"ann\tbob\t"); // the last name is empty
    EXPECT_EQ(server.freed, 3u);
}

TEST(FileUsers, ServersThatDoNotAnswer)
{
    const std::vector<FILE_INFO_3> files = {OpenFile(L"C:\\share\\a.txt", L"ann", PERM_FILE_READ)};
    const std::tuple<std::vector<FakeServer::Answer>, const char*, const wchar_t*> cases[] = {
        {{{ERROR_ACCESS_DENIED, files}}, "", L""}, {{{ERROR_MORE_DATA, files}, {ERROR_ACCESS_DENIED, {}}}, "", L"ann"},
        {{{ERROR_MORE_DATA, {}}, {NERR_Success, files}}, "", L""}, // empty blocks could follow for ever
        {{{NERR_Success, files}}, "NetFileEnum", L""}, {{{NERR_Success, files}}, "NetApiBufferFree", L""}};
    for (const auto& [answers, missing, users] : cases)
    {
        FakeServer server(answers);
        server.missing = missing;
        FileUsers found;
        EXPECT_EQ(GetFileInfoAccess(kFile, server, found), FileUsersResult::NoAnswer);
        EXPECT_EQ(found.access, 0u);
        EXPECT_STREQ(found.users, users);
    }
}

TEST(FileUsers, AListWithoutEnd)
{
    constexpr std::size_t kFiles = 500'000;
    FakeServer server(std::vector<FakeServer::Answer>(
        30, {ERROR_MORE_DATA, std::vector<FILE_INFO_3>(kFiles, OpenFile(L"", L"", 0))}));
    FileUsers found;
    EXPECT_EQ(GetFileInfoAccess(kFile, server, found), FileUsersResult::NoAnswer);
    EXPECT_EQ(server.calls, 10'000'000 / kFiles + 1);
    EXPECT_EQ(server.freed, server.calls);
}

TEST(FileUsers, OnlyPathsOfServersAreAsked)
{
    for (const wchar_t* const path : {L"", L"a.txt", L"\\a.txt", L"/a/b.txt", L"\\\\server"})
    {
        FakeServer server({});
        FileUsers found;
        EXPECT_EQ(GetFileInfoAccess(path, server, found), FileUsersResult::Done);
        EXPECT_EQ(server.calls, 0u);
    }
}

TEST(FileUsers, WithoutAPlaceForTheAccess)
{
    const DebugLines lines;
    EXPECT_EQ(UtilGetFileInfoAccess(kFile, nullptr, nullptr), -3);
    EXPECT_STREQ(lines.Only(), L"UtilGetFileAccess(): parameter #2 is NULL");
}
