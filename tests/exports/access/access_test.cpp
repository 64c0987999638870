#include <qxut23/access.h>

#include "platform/system_support.h"

#include <oleauto.h>

#include <string>
#include <tuple>
#include <utility>

using namespace qxtest;

namespace
{

std::string NarrowBytes(const wchar_t* text)
{
    char bytes[200] = {};
    WideCharToMultiByte(CP_ACP, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return bytes;
}

} // namespace

TEST(AccessExports, OpenFiles)
{
    BSTR users = SysAllocString(L"former");
    EXPECT_EQ(UtilGetFileInfoAccess(L"name", nullptr, &users), -3);
    EXPECT_STREQ(users, L"former");
    const std::pair<const wchar_t*, int> cases[] = {{L"\\\\qx-no-server\\share\\file", -2}, {L"name", 0}, {nullptr, 0}};
    for (const auto& [path, result] : cases)
    {
        std::uint32_t access = 0x55555555;
        EXPECT_EQ(UtilGetFileInfoAccess(path, &access, nullptr), result);
        EXPECT_EQ(access, 0u);
        SysFreeString(users);
        users = SysAllocString(L"former");
        EXPECT_EQ(UtilGetFileInfoAccess(path, &access, &users), result);
        EXPECT_STREQ(users, L"");
    }
    SysFreeString(users);
}

TEST(AccessExports, PathForms)
{
    BSTR form = SysAllocString(L"former");
    EXPECT_EQ(UtilEnsureUNCPath(L"C:\\x", nullptr), -1);
    EXPECT_EQ(UtilEnsureLocalPath(L"C:\\a", nullptr), 0);
    const std::tuple<decltype(&UtilEnsureUNCPath), const wchar_t*, int, const wchar_t*> cases[] = {
        {UtilEnsureUNCPath, L"C:\\x", -1, L"former"},
        {UtilEnsureUNCPath, L"\\\\server\\share\\a\\..\\b", 0, L"\\\\server\\share\\b"},
        {UtilEnsureLocalPath, L"C:\\a\\.\\b", 0, L"C:\\a\\b"}, {UtilEnsureLocalPath, nullptr, 0, L""}};
    for (const auto& [ensure, path, result, expected] : cases)
    {
        EXPECT_EQ(ensure(path, &form), result);
        EXPECT_STREQ(form, expected);
    }
    SysFreeString(form);
}

TEST(AccessExports, PathFormsInEightBits)
{
    const std::tuple<decltype(&UtilEnsureUNCPathForWise), const wchar_t*, const wchar_t*> cases[] = {
        {UtilEnsureLocalPathForWise, L"C:\\a\\..\\\u00e4", L"C:\\\u00e4"},
        {UtilEnsureUNCPathForWise, L"\\\\s\\t\\a\\..\\\u00e4", L"\\\\s\\t\\\u00e4"}};
    for (const auto& [ensure, widePath, wideAnswer] : cases)
    {
        const std::string path = NarrowBytes(widePath), answer = NarrowBytes(wideAnswer);
        const auto size = static_cast<std::uint32_t>(answer.size());
        char result[20] = "former";
        EXPECT_EQ(ensure(path.c_str(), result, size), static_cast<std::int32_t>(size));
        EXPECT_EQ(ensure(path.c_str(), result, 0), 0);
        EXPECT_EQ(ensure(path.c_str(), nullptr, 100), 100);
        EXPECT_STREQ(result, "former");
        EXPECT_EQ(ensure(path.c_str(), result, size + 1), 0);
        EXPECT_EQ(result, answer);
    }
    char unchanged[20] = "";
    EXPECT_EQ(UtilEnsureUNCPathForWise("C:\\x", unchanged, sizeof unchanged), -1);
}

TEST(AccessExports, Rights)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "content");
    WCHAR user[257] = {};
    DWORD userSize = 257;
    ASSERT_TRUE(GetUserNameW(user, &userSize));
    constexpr DWORD kRights = GENERIC_READ | GENERIC_WRITE;
    EXPECT_EQ(UtilAddAccessRights(path, user, kRights, QXUT_INHERIT_NONE), 0);
    EXPECT_EQ(UtilAddAccessRights(path, Text(L".\\") + user, kRights, QXUT_INHERIT_FILES | QXUT_INHERIT_FOLDERS), 0);
    EXPECT_EQ(UtilAddAccessRights(nullptr, user, kRights, QXUT_INHERIT_NONE), -2);
#if !defined(_WIN32) // Wine accepts an empty account
    EXPECT_EQ(UtilAddAccessRights(path, nullptr, kRights, QXUT_INHERIT_NONE), -2);
    EXPECT_EQ(UtilAddAccessRightsForWise(path.Narrow().c_str(), "SID:nonsense", kRights, QXUT_INHERIT_NONE), -2);
#endif
    EXPECT_EQ(BytesOf(path), "content");
}
