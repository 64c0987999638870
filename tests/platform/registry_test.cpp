// The registry's functions: codes, buffers, rights.
#include "platform/own_registry.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace
{

using namespace std::string_view_literals;

class Registry : public testing::Test
{
protected:
    void SetUp() override
    {
        // Where the registry is shared, tests run beside each other.
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        _root = u"Software\\qxplatform test " + std::u16string(test.begin(), test.end());
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, Root(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &_key, nullptr),
            ERROR_SUCCESS);
    }
    void TearDown() override
    {
        EXPECT_EQ(RegCloseKey(_key), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, Root()), ERROR_SUCCESS);
    }

    HKEY Create(HKEY parent, const wchar_t* name, REGSAM access = KEY_ALL_ACCESS, DWORD expectedDisposition = 0)
    {
        HKEY key = nullptr;
        DWORD disposition = 0;
        EXPECT_EQ(RegCreateKeyExW(parent, name, 0, nullptr, 0, access, nullptr, &key, &disposition), ERROR_SUCCESS);
        EXPECT_TRUE(expectedDisposition == 0 || disposition == expectedDisposition) << name;
        return key;
    }
    LSTATUS Open(HKEY parent, const wchar_t* name, HKEY& key, REGSAM access = KEY_READ)
    {
        key = reinterpret_cast<HKEY>(1);
        return RegOpenKeyExW(parent, name, 0, access, &key);
    }
    LSTATUS SetText(HKEY key, const wchar_t* name, std::wstring_view text)
    {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
            static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    }

    const wchar_t* Root() const { return reinterpret_cast<const wchar_t*>(_root.c_str()); }

    HKEY _key = nullptr;

private:
    std::u16string _root;
};

TEST_F(Registry, KeysAreCreatedOnceAndFoundWithoutCase)
{
    const HKEY first = Create(_key, L"Outer\\Inner", KEY_ALL_ACCESS, REG_CREATED_NEW_KEY);
    const HKEY again = Create(_key, L"OUTER\\inner\\", KEY_READ, REG_OPENED_EXISTING_KEY);
    EXPECT_NE(first, again);
    EXPECT_EQ(SetText(first, L"Größe", L"12\0"sv), ERROR_SUCCESS);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(again, L"GRÖßE", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 6u);

    wchar_t name[10];
    DWORD nameSize = 10;
    EXPECT_EQ(RegEnumKeyExW(_key, 0, name, &nameSize, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_STREQ(name, L"Outer");
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenCurrentUser(KEY_READ, &key), ERROR_SUCCESS);
    for (const HKEY opened : {first, again, key})
        EXPECT_EQ(RegCloseKey(opened), ERROR_SUCCESS);

    const std::u16string longName(300, u'n');
    const auto tooLong = reinterpret_cast<const wchar_t*>(longName.c_str());
    RegCloseKey(Create(_key, tooLong + 45));
    EXPECT_EQ(RegCreateKeyExW(_key, tooLong, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr), ERROR_INVALID_PARAMETER);
    for (const auto& [path, result] :
        {std::pair(L"outer\\\\Inner", ERROR_SUCCESS), {L"outer\\Other", ERROR_FILE_NOT_FOUND},
            {L"\\outer", ERROR_BAD_PATHNAME}, {tooLong, ERROR_INVALID_PARAMETER}})
    {
        EXPECT_EQ(Open(_key, path, key), result) << path;
        EXPECT_TRUE(result != ERROR_FILE_NOT_FOUND || key == nullptr);
        RegCloseKey(key);
    }
}

TEST_F(Registry, ValuesOfEachTypeComeBackByteForByte)
{
    struct
    {
        const wchar_t* name;
        DWORD type;
        std::string data;
    } const cases[] = {{nullptr, REG_SZ, std::string("d\0\0\0", 4)},
        {L"number", REG_DWORD, std::string("\x01\x02\x03\xFF", 4)},
        {L"big number", REG_QWORD, std::string("12345678", 8)}, {L"bytes", REG_BINARY, std::string(300, '\xA5')},
        {L"no bytes", REG_BINARY, ""}, {L"expand", REG_EXPAND_SZ, std::string("%\0P\0%\0\0\0", 8)},
        {L"multi", REG_MULTI_SZ, std::string("a\0\0\0b\0\0\0\0\0", 10)}, {L"odd text", REG_SZ, "abc"},
        {L"unterminated", REG_SZ, std::string("a\0b\0", 4)}, {L"empty text", REG_SZ, ""},
        {L"lines", REG_SZ, std::string("a\0\r\0\n\0\"\0\\\0\0\0", 12)},
        {L"lone surrogate", REG_SZ, std::string("\x3D\xD8x\0\0\0", 6)},
        {L"\"quoted\" \\ = name", REG_SZ, std::string("\0\0", 2)}, {L"own type", 0xABCDE, "1"}};
    for (const auto& c : cases)
    {
        // The system adds a terminator to a text if one follows in memory.
        const std::string data = c.data + "##";
        EXPECT_EQ(RegSetValueExW(_key, c.name, 0, c.type, reinterpret_cast<const BYTE*>(data.data()),
                      static_cast<DWORD>(c.data.size())),
            ERROR_SUCCESS);
    }
    ReadRegistryAnew();
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << (c.name != nullptr ? c.name : L"@"));
        std::string data(400, '#');
        DWORD size = 400, type = 77;
        EXPECT_EQ(
            RegQueryValueExW(_key, c.name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size), ERROR_SUCCESS);
        data.resize(size);
        EXPECT_EQ(type, c.type);
        EXPECT_EQ(data, c.data);
        if (size != 0)
        {
            EXPECT_EQ(RegQueryValueExW(_key, c.name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &--size),
                ERROR_MORE_DATA);
            EXPECT_EQ(size, c.data.size());
        }
    }
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
}

TEST_F(Registry, RightsOfTheHandleDecide)
{
    ASSERT_EQ(SetText(_key, L"v", L"x\0"sv), ERROR_SUCCESS);
    for (const auto& [rights, mayRead, mayWrite] : {std::tuple<REGSAM, bool, bool>(KEY_READ, true, false),
             {GENERIC_READ, true, false}, {KEY_WRITE, false, true}, {KEY_SET_VALUE, false, true}})
    {
        SCOPED_TRACE(rights);
        const LSTATUS read = mayRead ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
        const LSTATUS write = mayWrite ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
        HKEY key = nullptr;
        ASSERT_EQ(Open(_key, L"", key, rights), ERROR_SUCCESS);
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, &size), read);
        EXPECT_EQ(SetText(key, L"w", L"y\0"sv), write);
        EXPECT_EQ(RegDeleteValueW(key, L"W"), write);
        EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    }
}

TEST_F(Registry, DeletedKeysAndStaleHandlesAreTold)
{
    const HKEY inner = Create(_key, L"a\\b");
    EXPECT_EQ(RegDeleteKeyW(_key, L"a"), ERROR_ACCESS_DENIED) << "it has a key below";
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L""), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyW(_key, L"A\\B"), ERROR_SUCCESS);
    const auto expectAll = [](HKEY key, LSTATUS expected)
    {
        HKEY below = nullptr;
        DWORD size = 10;
        EXPECT_EQ(RegSetValueExW(key, L"v", 0, REG_BINARY, nullptr, 0), expected);
        EXPECT_EQ(RegQueryValueExW(key, L"v", nullptr, nullptr, nullptr, &size), expected);
        EXPECT_EQ(RegOpenKeyExW(key, L"c", 0, KEY_READ, &below), expected);
        EXPECT_EQ(RegCreateKeyExW(key, L"c", 0, nullptr, 0, KEY_READ, nullptr, &below, nullptr), expected);
    };
    expectAll(inner, ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(inner), ERROR_SUCCESS);
    for (const HKEY bad : {inner, HKEY{}, reinterpret_cast<HKEY>(0x1234)})
    {
        expectAll(bad, ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegCloseKey(bad), ERROR_INVALID_HANDLE);
    }
}

} // namespace
