// Paths of drives that are connected with shares.
#include <qxut23/access.h>

#include "support/own_drives.h"

#include <gtest/gtest.h>

#include <oleauto.h>

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
