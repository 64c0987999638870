#include "core/registry/registry.h"

#include "core/errors/exception.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace qx;
using qxtest::DebugLines;

namespace
{

// A private key for each test below the user's root, deleted at the end.
class Registry : public testing::Test
{
protected:
    Registry()
    {
        _name.Format(L"Software\\qxut-test-%d", static_cast<int>(GetCurrentProcessId()));
        RegCreateKeyExW(HKEY_CURRENT_USER, _name.Text(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
            &_key, nullptr);
    }
    ~Registry() override
    {
        RegCloseKey(_key);
        for (const wchar_t* below : {L"\\made\\deep", L"\\made", L""})
            RegDeleteKeyW(HKEY_CURRENT_USER, (_name + below).Text());
    }

    void SetBytes(const wchar_t* name, DWORD type, const void* bytes, std::size_t count)
    {
        ASSERT_EQ(RegSetValueExW(_key, name, 0, type, static_cast<const BYTE*>(bytes), static_cast<DWORD>(count)),
            ERROR_SUCCESS);
    }
    void SetText(const wchar_t* name, const String& text)
    {
        SetBytes(name, REG_SZ, text.Text(), (text.Length() + 1) * sizeof(wchar_t));
    }

    String _name;
    HKEY _key = nullptr;
};

} // namespace

TEST_F(Registry, TextsOfAnyLengthWithAndWithoutATerminator)
{
    clsRegistryList list(HKEY_CURRENT_USER, _name.Text(), clsRegistryList::kRead);
    ASSERT_EQ(list.LastResult(), 0);
    // 255 characters and the terminator fill the initial buffer of 512 bytes.
    for (const std::size_t length : {0U, 1U, 255U, 256U, 257U, 5000U})
        for (const std::size_t terminator : {0U, 1U})
        {
            SCOPED_TRACE(length);
            String text, read(L"before");
            text.Fill(L'x', length);
            SetBytes(L"value", REG_SZ, text.Text(), (length + terminator) * sizeof(wchar_t));
            EXPECT_EQ(list.GetString(L"value", read, L"default"), 0);
            EXPECT_STREQ(read.Text(), text.Text());
            EXPECT_EQ(list.LastResult(), 0);
        }
    String read;
    for (const wchar_t* text : {L"True", L"t", L"F", L""}) // only a text that begins with an upper-case T is true
    {
        SetText(L"flag", text);
        bool flag = *text != L'T';
        EXPECT_EQ(list.GetBool(L"flag", flag, flag), 0);
        EXPECT_EQ(flag, *text == L'T') << String(text).NarrowText();
    }
    SetBytes(L"two", REG_EXPAND_SZ, L"a\0b", 4 * sizeof(wchar_t));
    EXPECT_EQ(list.GetString(L"two", read, L""), 0);
    EXPECT_STREQ(read.Text(), L"a");
}

TEST_F(Registry, DefaultsStandForWhatCannotBeRead)
{
    clsRegistryList list(HKEY_CURRENT_USER, _name.Text(), clsRegistryList::kRead);
    clsRegistryList missing(HKEY_CURRENT_USER, L"Software\\qxut-test-missing", clsRegistryList::kRead);
    EXPECT_EQ(missing.LastResult(), -2);
    const DWORD number = 7;
    SetBytes(L"number", REG_DWORD, &number, sizeof number);
    const std::tuple<clsRegistryList&, const wchar_t*, int> cases[] = {
        {list, L"missing", -6}, {list, L"number", -6}, {missing, L"number", -5}};
    for (const auto& [source, name, result] : cases)
    {
        String read(L"before");
        EXPECT_EQ(source.GetString(name, read, L"default"), result);
        EXPECT_EQ(source.LastResult(), result);
        EXPECT_STREQ(read.Text(), L"default");
        bool flag = false;
        EXPECT_EQ(source.GetBool(name, flag, true), -1);
        EXPECT_TRUE(flag);
    }
}

TEST_F(Registry, CreatingModeMakesTheKeyOrReportsToDevelopers)
{
    const String name = _name + L"\\made\\deep";
    EXPECT_EQ(clsRegistryList(HKEY_CURRENT_USER, name.Text(), clsRegistryList::kCreate | 4).LastResult(), 0);
    EXPECT_EQ(clsRegistryList(HKEY_CURRENT_USER, name.Text(), clsRegistryList::kRead).LastResult(), 0);

    const auto foreign = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x12344));
    const DebugLines lines;
    EXPECT_EQ(clsRegistryList(foreign, L"sub", clsRegistryList::kCreate).LastResult(), -3);
    EXPECT_EQ(lines.Count(), 0U);
    const qxtest::UserIs developer(L"qvx");
    EXPECT_EQ(clsRegistryList(foreign, L"sub", clsRegistryList::kCreate).LastResult(), -3);
    EXPECT_TRUE(lines.Only().View().starts_with(L"WRN: clsRegistryList::ct() cannot create subkey 'sub' in key "));
}

TEST_F(Registry, NullSubkeyAdoptsTheRoot)
{
    SetText(L"value", L"here");
    const DebugLines lines;
    {
        clsRegistryList adopted(_key, nullptr, clsRegistryList::kRead);
        EXPECT_STREQ(lines.Only().Text(), L"ATTN: possibly non-ref-counted registry key acces...");
        String read;
        EXPECT_EQ(adopted.GetString(L"value", read, L""), 0);
        EXPECT_STREQ(read.Text(), L"here");
    }
    DWORD bytes = 0;
    EXPECT_EQ(RegQueryValueExW(_key, L"value", nullptr, nullptr, nullptr, &bytes), ERROR_INVALID_HANDLE);
    _key = nullptr;

    // The user's root itself is not deleted.
    {
        clsRegistryList root(HKEY_CURRENT_USER, nullptr, clsRegistryList::kRead);
    }
    EXPECT_EQ(clsRegistryList(HKEY_CURRENT_USER, _name.Text(), clsRegistryList::kRead).LastResult(), 0);
}

TEST_F(Registry, UsersRootFollowsTheMachineSetting)
{
    HKEY machine = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"software\\trelmo", 0, nullptr, REG_OPTION_NON_VOLATILE,
                  KEY_ALL_ACCESS, nullptr, &machine, nullptr),
        ERROR_SUCCESS);
    const auto set = [&](const wchar_t* text)
    {
        RegSetValueExW(machine, L"Registry.ImpersonationAware", 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
            static_cast<DWORD>((wcslen(text) + 1) * sizeof(wchar_t)));
        ForgetUserRootKey();
    };
    SetText(L"value", L"mine");

    set(L"F");
    EXPECT_EQ(UtilGetUserRootKey(true), HKEY_CURRENT_USER);

    set(L"True");
    const HKEY opened = UtilGetUserRootKey(true);
    EXPECT_NE(opened, HKEY_CURRENT_USER);
    CloseUserRootKey(opened);
    clsRegistryList list(HKEY_CURRENT_USER, _name.Text(), clsRegistryList::kRead);
    String read;
    EXPECT_EQ(list.GetString(L"value", read, L""), 0);
    EXPECT_STREQ(read.Text(), L"mine");

    RegDeleteValueW(machine, L"Registry.ImpersonationAware");
    RegCloseKey(machine);
    EXPECT_NE(UtilGetUserRootKey(true), HKEY_CURRENT_USER); // queried once
    ForgetUserRootKey();
    EXPECT_EQ(UtilGetUserRootKey(true), HKEY_CURRENT_USER);
}

TEST(Exception, MessagesAreInsertedLoggedAndStacked)
{
    const DebugLines lines;
    clsException error(L"line %1!d!: %2 expected", 12, L"')'");
    error.Push(L"while reading %1", L"'x'");
    const clsException copy(error);

    ASSERT_EQ(copy.Errors().Count(), 2U);
    EXPECT_STREQ(copy.Errors().First()->Text(), L"while reading 'x'");
    EXPECT_STREQ(copy.Errors().Last()->Text(), L"line 12: ')' expected");
    const auto logged = lines.Entries();
    ASSERT_EQ(logged.size(), 2U); // a copy logs nothing
    EXPECT_STREQ(logged[0].text.Text(), L"EXCEPTION(line 12: ')' expected)");
    EXPECT_STREQ(logged[1].text.Text(), L"EXCEPTION(while reading 'x')");
    EXPECT_TRUE(clsException(nullptr).Errors().IsEmpty());
    EXPECT_EQ(lines.Count(), 2U);
}
