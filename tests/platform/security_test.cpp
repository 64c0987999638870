// Access lists of files: the steps that both systems share.
#include "system_support.h"

#include <aclapi.h>

using namespace qxtest;

namespace
{

constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;

DWORD ReadList(const Text& path, PACL& list, PSECURITY_DESCRIPTOR& descriptor)
{
    Text name = path;
    return GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, kList, nullptr, nullptr, &list, nullptr, &descriptor);
}

TEST(Security, RightsOfTheUserAreSet)
{
    const Folder folder;
    Text path = folder / L"file";
    MakeFile(path, "content");
    WCHAR user[257] = {};
    DWORD userSize = 257;
    ASSERT_TRUE(GetUserNameW(user, &userSize));

    PACL list = nullptr;
    PACL changed = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_EQ(ReadList(path, list, descriptor), DWORD{ERROR_SUCCESS});
    EXPLICIT_ACCESS_W access{};
    BuildExplicitAccessWithNameW(&access, user, GENERIC_READ | GENERIC_WRITE, SET_ACCESS, NO_INHERITANCE);
    ASSERT_EQ(SetEntriesInAclW(1, &access, list, &changed), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kList, nullptr, nullptr, changed, nullptr),
        DWORD{ERROR_SUCCESS});
    EXPECT_EQ(BytesOf(path), "content");

    EXPECT_EQ(LocalFree(changed), nullptr);
    EXPECT_EQ(LocalFree(descriptor), nullptr);

    EXPECT_EQ(ReadList(folder / L"missing", list, descriptor), DWORD{ERROR_FILE_NOT_FOUND});
}

} // namespace
