#include <qxut23/access.h>

#include "platform/system_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstring>
#include <string>

using namespace qxtest;

namespace
{

constexpr std::uint32_t kUnset = 0x55555555;

// A BSTR that has a text already.
class InOut
{
public:
    InOut() : _text(SysAllocString(L"former")) {}
    InOut(const InOut&) = delete;
    InOut& operator=(const InOut&) = delete;
    ~InOut() { SysFreeString(_text); }

    BSTR* operator&() { return &_text; }
    std::string Narrow() const { return Text(_text).Narrow(); }

private:
    BSTR _text;
};

std::string NarrowBytes(const wchar_t* text)
{
    char bytes[200] = {};
    WideCharToMultiByte(CP_ACP, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return bytes;
}

} // namespace

TEST(AccessExports, OpenFiles)
{
    const Folder folder;
    MakeFile(folder / L"file");
    InOut users;
    EXPECT_EQ(UtilGetFileInfoAccess(folder / L"file", nullptr, &users), -3);
    EXPECT_EQ(users.Narrow(), "former");

    std::uint32_t access = kUnset;
    const wchar_t* const onServer = L"\\\\qx-no-server\\share\\file";
    EXPECT_EQ(UtilGetFileInfoAccess(onServer, &access, nullptr), -2);
    EXPECT_EQ(access, 0u);
    EXPECT_EQ(UtilGetFileInfoAccess(onServer, &access, &users), -2);
    EXPECT_EQ(users.Narrow(), "");

    for (const wchar_t* const path : {L"name", static_cast<const wchar_t*>(nullptr)})
    {
        InOut none;
        access = kUnset;
        EXPECT_EQ(UtilGetFileInfoAccess(path, &access, &none), 0);
        EXPECT_EQ(access, 0u);
        EXPECT_EQ(none.Narrow(), "");
    }
}

TEST(AccessExports, PathForms)
{
    InOut result;
    EXPECT_EQ(UtilEnsureUNCPath(L"C:\\x", &result), -1);
    EXPECT_EQ(result.Narrow(), "former");
    EXPECT_EQ(UtilEnsureUNCPath(L"C:\\x", nullptr), -1);
    EXPECT_EQ(UtilEnsureUNCPath(L"\\\\server\\share\\a\\..\\b", &result), 0);
    EXPECT_EQ(result.Narrow(), "\\\\server\\share\\b");
    EXPECT_EQ(UtilEnsureLocalPath(L"C:\\a\\.\\b", &result), 0);
    EXPECT_EQ(result.Narrow(), "C:\\a\\b");
    EXPECT_EQ(UtilEnsureLocalPath(L"C:\\a", nullptr), 0);
    BSTR made = nullptr;
    EXPECT_EQ(UtilEnsureLocalPath(nullptr, &made), 0);
    EXPECT_STREQ(made, L"");
    SysFreeString(made);
}

TEST(AccessExports, PathFormsInEightBits)
{
    char result[20] = "former";
    for (const auto ensure : {UtilEnsureLocalPathForWise, UtilEnsureUNCPathForWise})
    {
        const bool isLocal = ensure == UtilEnsureLocalPathForWise;
        const std::string path = NarrowBytes(isLocal ? L"C:\\a\\..\\\u00e4" : L"\\\\s\\t\\a\\..\\\u00e4");
        const std::string answer = NarrowBytes(isLocal ? L"C:\\\u00e4" : L"\\\\s\\t\\\u00e4");
        const auto size = static_cast<std::uint32_t>(answer.size());
        std::strcpy(result, "former");
        EXPECT_EQ(ensure(path.c_str(), result, size), static_cast<std::int32_t>(size));
        EXPECT_EQ(ensure(path.c_str(), result, 0), 0);
        EXPECT_EQ(ensure(path.c_str(), nullptr, 100), 100);
        EXPECT_STREQ(result, "former");
        EXPECT_EQ(ensure(path.c_str(), result, size + 1), 0);
        EXPECT_EQ(result, answer);
    }
    EXPECT_EQ(UtilEnsureUNCPathForWise("C:\\x", result, sizeof result), -1);
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
    EXPECT_EQ(UtilAddAccessRights(path, L"qx-no-such-account", kRights, QXUT_INHERIT_NONE), -2);
    EXPECT_EQ(UtilAddAccessRights(folder / L"missing", user, kRights, QXUT_INHERIT_NONE), -2);
    EXPECT_EQ(UtilAddAccessRights(nullptr, user, kRights, QXUT_INHERIT_NONE), -2);
#if !defined(_WIN32) // Wine accepts an empty account
    EXPECT_EQ(UtilAddAccessRights(path, nullptr, kRights, QXUT_INHERIT_NONE), -2);
    for (const char* const sid : {"", "SID:nonsense", "AQ8AAAAAAAUSAAAA"})
        EXPECT_EQ(UtilAddAccessRightsForWise(path.Narrow().c_str(), sid, kRights, QXUT_INHERIT_NONE), -2);
#endif
    EXPECT_EQ(BytesOf(path), "content");
}
