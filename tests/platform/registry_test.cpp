// The registry's functions: codes, buffers, rights.
#include "platform/own_registry.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

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

    HKEY opened = nullptr;
    EXPECT_EQ(Open(_key, L"outer\\\\Inner", opened), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(opened), ERROR_SUCCESS);
    EXPECT_EQ(Open(_key, L"outer\\Other", opened), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(opened, nullptr);
    EXPECT_EQ(Open(_key, L"\\outer", opened), ERROR_BAD_PATHNAME);

    wchar_t name[10];
    DWORD nameSize = 10;
    EXPECT_EQ(RegEnumKeyExW(_key, 0, name, &nameSize, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_STREQ(name, L"Outer");
    RegCloseKey(first);
    RegCloseKey(again);
}

TEST_F(Registry, EmptySubKeyIsTheKeyItself)
{
    HKEY same = nullptr;
    EXPECT_EQ(Open(_key, L"", same), ERROR_SUCCESS);
    EXPECT_NE(same, _key);
    RegCloseKey(same);
    EXPECT_EQ(Open(HKEY_CURRENT_USER, nullptr, same), ERROR_SUCCESS);
    EXPECT_EQ(same, HKEY_CURRENT_USER);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
    EXPECT_EQ(RegOpenCurrentUser(KEY_READ, &same), ERROR_SUCCESS);
    EXPECT_NE(same, HKEY_CURRENT_USER);
    HKEY key = nullptr;
    EXPECT_EQ(Open(same, Root(), key), ERROR_SUCCESS);
    RegCloseKey(key);
    RegCloseKey(same);
}

TEST_F(Registry, QueryTellsTypeAndSizeAndKeepsToTheBuffer)
{
    ASSERT_EQ(SetText(_key, L"v", L"abcde\0"sv), ERROR_SUCCESS);
    constexpr DWORD kNoType = 77;
    wchar_t data[10];
    struct
    {
        const wchar_t* name;
        bool withData, withSize;
        DWORD size;
        LSTATUS result;
        DWORD sizeAfter, typeAfter;
    } const cases[] = {
        {L"v", true, true, 20, ERROR_SUCCESS, 12, REG_SZ},
        {L"V", true, true, 12, ERROR_SUCCESS, 12, REG_SZ},
        {L"v", true, true, 11, ERROR_MORE_DATA, 12, REG_SZ},
        {L"v", true, true, 0, ERROR_MORE_DATA, 12, REG_SZ},
        {L"v", false, true, 0, ERROR_SUCCESS, 12, REG_SZ},
        {L"v", false, false, 5, ERROR_SUCCESS, 5, REG_SZ},
        {L"v", true, false, 5, ERROR_INVALID_PARAMETER, 5, kNoType},
        {L"absent", true, true, 20, ERROR_FILE_NOT_FOUND, 20, kNoType},
        {nullptr, true, true, 20, ERROR_FILE_NOT_FOUND, 20, kNoType},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
    {
        const auto& c = cases[i];
        SCOPED_TRACE(i);
        std::fill(std::begin(data), std::end(data), L'#');
        DWORD size = c.size, type = kNoType;
        EXPECT_EQ(RegQueryValueExW(_key, c.name, nullptr, &type, c.withData ? reinterpret_cast<BYTE*>(data) : nullptr,
                      c.withSize ? &size : nullptr),
            c.result);
        EXPECT_EQ(size, c.sizeAfter);
        EXPECT_EQ(type, c.typeAfter);
        if (c.result == ERROR_SUCCESS && c.withData)
            EXPECT_STREQ(data, L"abcde");
        else
            EXPECT_EQ(data[0], L'#');
    }
}

TEST_F(Registry, ValuesOfEachTypeComeBackByteForByte)
{
    struct
    {
        const wchar_t* name;
        DWORD type;
        std::string data;
    } const cases[] = {
        {nullptr, REG_SZ, std::string("d\0\0\0", 4)},
        {L"number", REG_DWORD, std::string("\x01\x02\x03\xFF", 4)},
        {L"short number", REG_DWORD, std::string("\x01\x02\x03", 3)},
        {L"big number", REG_QWORD, std::string("12345678", 8)},
        {L"bytes", REG_BINARY, std::string(300, '\xA5')},
        {L"no bytes", REG_BINARY, ""},
        {L"expand", REG_EXPAND_SZ, std::string("%\0P\0%\0\0\0", 8)},
        {L"multi", REG_MULTI_SZ, std::string("a\0\0\0b\0\0\0\0\0", 10)},
        {L"none", REG_NONE, "x"},
        {L"odd text", REG_SZ, "abc"},
        {L"unterminated", REG_SZ, std::string("a\0b\0", 4)},
        {L"empty text", REG_SZ, ""},
        {L"two terminators", REG_SZ, std::string("a\0\0\0\0\0", 6)},
        {L"lines", REG_SZ, std::string("a\0\r\0\n\0\"\0\\\0\0\0", 12)},
        {L"lone surrogate", REG_SZ, std::string("\x3D\xD8x\0\0\0", 6)},
        {L"\"quoted\" \\ = name", REG_SZ, std::string("\0\0", 2)},
        {L"own type", 0xABCDE, "1"},
    };
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
    }
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
}

TEST_F(Registry, RightsOfTheHandleDecide)
{
    SetText(_key, L"v", L"x\0"sv);
    HKEY reader = nullptr, writer = nullptr;
    ASSERT_EQ(Open(_key, L"", reader, KEY_READ), ERROR_SUCCESS);
    ASSERT_EQ(Open(_key, L"", writer, KEY_WRITE), ERROR_SUCCESS);
    DWORD size = 0;
    wchar_t name[10];
    EXPECT_EQ(SetText(reader, L"v", L"y\0"sv), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(reader, L"v"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegQueryValueExW(writer, L"v", nullptr, nullptr, nullptr, &size), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegEnumKeyExW(writer, 0, name, &(size = 10), nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegEnumValueW(writer, 0, name, &(size = 10), nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetText(writer, L"v", L"z\0"sv), ERROR_SUCCESS);

    // Making and deleting keys is a matter of the key, not of the handle.
    RegCloseKey(Create(reader, L"below", KEY_READ, REG_CREATED_NEW_KEY));
    EXPECT_EQ(RegDeleteKeyW(reader, L"below"), ERROR_SUCCESS);

    // One right alone: what UtilLanguageSet and its like ask for.
    HKEY setter = nullptr;
    ASSERT_EQ(Open(_key, L"", setter, KEY_SET_VALUE), ERROR_SUCCESS);
    EXPECT_EQ(SetText(setter, L"v", L"!\0"sv), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(setter, L"v", nullptr, nullptr, nullptr, &size), ERROR_ACCESS_DENIED);
    HKEY generic = nullptr;
    ASSERT_EQ(Open(_key, L"", generic, GENERIC_READ), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(generic, L"v", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(SetText(generic, L"v", L"?\0"sv), ERROR_ACCESS_DENIED);
    for (const HKEY key : {reader, writer, setter, generic})
        EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(Registry, DeletedKeysAndStaleHandlesAreTold)
{
    const HKEY inner = Create(_key, L"a\\b");
    EXPECT_EQ(RegDeleteKeyW(_key, L"a"), ERROR_ACCESS_DENIED) << "it has a key below";
    EXPECT_EQ(RegDeleteKeyW(_key, L"c"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyW(_key, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L""), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyW(_key, L"A\\B"), ERROR_SUCCESS);

    HKEY key = nullptr;
    DWORD size = 10;
    wchar_t name[10];
    EXPECT_EQ(SetText(inner, L"v", L"x\0"sv), ERROR_KEY_DELETED);
    EXPECT_EQ(RegQueryValueExW(inner, L"v", nullptr, nullptr, nullptr, &size), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumKeyExW(inner, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(Open(inner, L"c", key), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCreateKeyExW(inner, L"c", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(inner), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(inner), ERROR_INVALID_HANDLE);

    for (const HKEY bad : {inner, HKEY{}, reinterpret_cast<HKEY>(0x1234)})
    {
        EXPECT_EQ(SetText(bad, L"v", L"x\0"sv), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegQueryValueExW(bad, L"v", nullptr, nullptr, nullptr, &size), ERROR_INVALID_HANDLE);
        EXPECT_EQ(Open(bad, L"x", key), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegDeleteKeyW(bad, L"x"), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegCloseKey(bad), ERROR_INVALID_HANDLE);
    }
}

TEST_F(Registry, TreesAreDeletedWithAllBelow)
{
    RegCloseKey(Create(_key, L"a\\b\\c"));
    RegCloseKey(Create(_key, L"d"));
    SetText(_key, L"v", L"x\0"sv);
    HKEY key = nullptr;
    EXPECT_EQ(RegDeleteTreeW(_key, L"A"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(_key, L"A"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(_key, L"a\\b\\c", key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(_key, nullptr), ERROR_SUCCESS) << "the key itself stays";
    EXPECT_EQ(Open(_key, L"d", key), ERROR_FILE_NOT_FOUND);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(_key, L"v", nullptr, nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, ListsKeysAndValues)
{
    for (const wchar_t* name : {L"one", L"two", L"three"})
    {
        RegCloseKey(Create(_key, name));
        ASSERT_EQ(SetText(_key, name, std::wstring_view(name, wcslen(name) + 1)), ERROR_SUCCESS);
    }
    const auto list = [](auto&& next)
    {
        std::multiset<std::u16string> names;
        wchar_t name[6];
        DWORD size = 6;
        for (DWORD index = 0; next(index, name, size) == ERROR_SUCCESS; ++index, size = 6)
            names.emplace(name, name + size);
        return names;
    };
    const std::multiset<std::u16string> expected{u"one", u"two", u"three"};
    EXPECT_EQ(list([&](DWORD index, wchar_t* name, DWORD& size)
                  { return RegEnumKeyExW(_key, index, name, &size, nullptr, nullptr, nullptr, nullptr); }),
        expected);
    EXPECT_EQ(list(
                  [&](DWORD index, wchar_t* name, DWORD& size)
                  {
                      BYTE data[12];
                      DWORD dataSize = 12, type = 0;
                      const LSTATUS result = RegEnumValueW(_key, index, name, &size, nullptr, &type, data, &dataSize);
                      EXPECT_TRUE(result != ERROR_SUCCESS || dataSize == (size + 1) * sizeof(wchar_t));
                      return result;
                  }),
        expected);

    wchar_t name[6];
    DWORD size = 6, dataSize = 1, type = 0;
    BYTE data[10];
    EXPECT_EQ(RegEnumKeyExW(_key, 3, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegEnumValueW(_key, 3, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegEnumValueW(_key, 0, name, &(size = 6), nullptr, &type, data, &dataSize), ERROR_MORE_DATA);
    EXPECT_EQ(RegEnumValueW(_key, 0, name, &(size = 6), nullptr, &type, data, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegEnumKeyExW(_key, 0, name, &(size = 3), nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA)
        << "no room for the terminator";

    DWORD keys = 0, longestKey = 0, values = 0, longestValue = 0, largestData = 0;
    EXPECT_EQ(RegQueryInfoKeyW(_key, nullptr, nullptr, nullptr, &keys, &longestKey, nullptr, &values, &longestValue,
                  &largestData, nullptr, nullptr),
        ERROR_SUCCESS);
    EXPECT_EQ((std::vector{keys, longestKey, values, longestValue, largestData}), (std::vector<DWORD>{3, 5, 3, 5, 12}));

    EXPECT_EQ(RegDeleteValueW(_key, L"ONE"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(_key, L"one"), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, NamesAreBounded)
{
    HKEY key = nullptr;
    const std::u16string name(300, u'n');
    const auto text = reinterpret_cast<const wchar_t*>(name.c_str());
    EXPECT_EQ(RegCreateKeyExW(_key, text, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Open(_key, text, key), ERROR_INVALID_PARAMETER);
    RegCloseKey(Create(_key, text + 45));
    EXPECT_EQ(RegCreateKeyExW(_key, L"x", 1, nullptr, 0, KEY_READ, nullptr, &key, nullptr), ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, LocalMachineIsReadable)
{
    HKEY key = nullptr;
    EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, L"software\\qxplatform no such key", key), ERROR_FILE_NOT_FOUND);
    DWORD size = 0;
    EXPECT_EQ(
        RegQueryValueExW(HKEY_LOCAL_MACHINE, L"no such value", nullptr, nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
}

} // namespace
