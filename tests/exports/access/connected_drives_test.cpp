// Paths of drives that are connected with shares, and rights as another program shows them.
#include <qxut23/access.h>

#include "platform/system_support.h"
#include "support/own_drives.h"

#include <gtest/gtest.h>

#include <oleauto.h>

#include <filesystem>

#include <sys/stat.h>

using namespace qxtest;

TEST(AccessExports, ConnectedDrives)
{
    const OwnDrives drives;
    drives.Link("q:", "unc/server/share");
    BSTR path = nullptr;
    EXPECT_EQ(UtilEnsureLocalPath(L"\\\\SERVER\\share\\a", &path), 0);
    EXPECT_STREQ(path, L"Q:\\a");
    EXPECT_EQ(UtilEnsureLocalPath(L"\\\\server\\share", &path), 0);
    EXPECT_STREQ(path, L"Q:");
    EXPECT_EQ(UtilEnsureLocalPath(L"\\\\server\\other\\a", &path), 0);
    EXPECT_STREQ(path, L"\\\\server\\other\\a");
    EXPECT_EQ(UtilEnsureUNCPath(L"Q:\\a", &path), 0);
    EXPECT_STREQ(path, L"\\\\server\\share\\a");
    SysFreeString(path);

    char narrow[20] = "former";
    EXPECT_EQ(UtilEnsureLocalPathForWise("\\\\server\\share\\a", narrow, 4), 4);
    EXPECT_STREQ(narrow, "former");
    EXPECT_EQ(UtilEnsureLocalPathForWise("\\\\server\\share\\a", narrow, 5), 0);
    EXPECT_STREQ(narrow, "Q:\\a");
}

// Connections exist whether or not their shares do; a file in one gets the rights.
TEST(AccessExports, RightsOnAConnectedDrive)
{
    const OwnDrives drives;
    const std::filesystem::path file = drives.MakeShare("server", "share") / "file";
    drives.Link("q:", "unc/server/share");
    EXPECT_EQ(UtilAddAccessRights(L"Q:\\file", L"root", GENERIC_READ, QXUT_INHERIT_NONE), -2) << "no such file yet";
    MakeFile(L"Q:\\file");
    struct stat info
    {
    };
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    WCHAR user[257] = {};
    DWORD size = 257;
    ASSERT_TRUE(GetUserNameW(user, &size));
    EXPECT_EQ(UtilAddAccessRights(L"Q:\\file", user, GENERIC_READ | GENERIC_EXECUTE, QXUT_INHERIT_NONE), 0);
    const mode_t others = info.st_mode & 077;
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0500u | others);
}
