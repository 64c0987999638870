// Access lists of files: the steps that both systems share.
#include "security_support.h"

using namespace qxtest;

TEST(Security, RightsOfTheUserAreSet)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "content");
    WCHAR user[257] = {};
    DWORD userSize = 257;
    ASSERT_TRUE(GetUserNameW(user, &userSize));
    EXPECT_EQ(SetRights(path, user, GENERIC_READ | GENERIC_WRITE, NO_INHERITANCE), "");
    EXPECT_EQ(BytesOf(path), "content");
    EXPECT_EQ(SetRights(folder / L"missing", user, GENERIC_READ, NO_INHERITANCE), "get: 2");
}
