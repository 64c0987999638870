// Connections that the system can't list. The enumeration's functions are replaced, because the layer's don't fail.
#include "accounts/file_users.h"
#include "accounts/path_forms.h"

#include "support/debug_lines.h"
#include "unit/accounts/fake_server.h"

#include <qxut23/access.h>

#include <gtest/gtest.h>
#include <winnetwk.h>

using namespace qx;
using namespace qxtest;

namespace
{

DWORD openResult = ERROR_SUCCESS;
std::vector<std::pair<DWORD, DWORD>> blocks; // result and required size
std::size_t walks = 0, ends = 0, reads = 0;

} // namespace

DWORD WINAPI WNetOpenEnumW(DWORD, DWORD, DWORD, LPNETRESOURCEW, LPHANDLE walk)
{
    *walk = &walks;
    walks += openResult == ERROR_SUCCESS;
    return openResult;
}

DWORD WINAPI WNetEnumResourceW(HANDLE, LPDWORD, LPVOID, LPDWORD size)
{
    if (reads == blocks.size())
        return ERROR_NO_MORE_ITEMS;
    *size = blocks[reads].second;
    return blocks[reads++].first;
}

DWORD WINAPI WNetCloseEnum(HANDLE)
{
    ++ends;
    return ERROR_SUCCESS;
}

TEST(FailingConnections, AreReported)
{
    const DebugLines lines;
    std::uint32_t access = 7;
    openResult = ERROR_ACCESS_DENIED;
    EXPECT_EQ(UtilGetFileInfoAccess(L"q:\\a", &access, nullptr), -2);
    EXPECT_EQ(access, 0u);
    EXPECT_STREQ(lines.Only(), L"UtilGetFileAccess(): WNetOpenEnum() failed");
    String local = L"(unchanged)";
    EXPECT_FALSE(EnsureLocalPath(L"\\\\server\\share", local));
    EXPECT_STREQ(local, L"(unchanged)");
    EXPECT_EQ(walks, 0u);
}

TEST(FailingConnections, ABlockGrowsOnce)
{
    openResult = ERROR_SUCCESS;
    blocks = {{ERROR_MORE_DATA, 20'000}, {ERROR_MORE_DATA, 30'000}};
    {
        const DebugLines lines;
        std::uint32_t access = 7;
        EXPECT_EQ(UtilGetFileInfoAccess(L"q:\\a", &access, nullptr), -2);
        EXPECT_STREQ(lines.Only(), L"UtilGetFileAccess(): WNetEnumResource() failed");
    }
    EXPECT_EQ(reads, 2u);
    EXPECT_EQ(ends, walks);
    // A failure without another size means that there are no connections. So the file is on no server.
    reads = 0;
    blocks = {{ERROR_ACCESS_DENIED, 16'000}};
    FakeServer server({});
    FileUsers found;
    EXPECT_EQ(GetFileInfoAccess(L"q:\\a", server, found), FileUsersResult::Done);
    EXPECT_EQ(server.calls, 0u);
    EXPECT_EQ(ends, walks);
}
