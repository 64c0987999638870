// The registry functions: result codes and buffers.
#include "platform/own_registry.h"

#include <tuple>
#include <utility>

using qxtest::Text;

namespace
{

class Registry : public testing::Test
{
protected:
    void SetUp() override
    {
        OwnRegistryFolder();
        // If the registry is shared, tests running in parallel need different keys.
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        _root = Text(L"Software\\qxplatform test ") + Text::Widen(test);
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, _root, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &_key, nullptr),
            ERROR_SUCCESS);
    }
    void TearDown() override
    {
        EXPECT_EQ(RegCloseKey(_key), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, _root), ERROR_SUCCESS);
    }

    HKEY Create(const wchar_t* name, DWORD expectedDisposition)
    {
        HKEY key = nullptr;
        DWORD disposition = 0;
        EXPECT_EQ(
            RegCreateKeyExW(_key, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &disposition), ERROR_SUCCESS);
        EXPECT_EQ(disposition, expectedDisposition) << name;
        return key;
    }

    HKEY _key = nullptr;

private:
    Text _root;
};

TEST_F(Registry, KeysAreCreatedOnceAndFoundWithoutCase)
{
    const HKEY first = Create(L"Outer\\Inner", REG_CREATED_NEW_KEY);
    const HKEY again = Create(L"OUTER\\inner\\", REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(RegSetValueExW(first, L"Größe", 0, REG_BINARY, reinterpret_cast<const BYTE*>("abc"), 3), ERROR_SUCCESS);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(again, L"GRÖßE", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 3u);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenCurrentUser(KEY_READ, &key), ERROR_SUCCESS);
    for (const HKEY opened : {first, again, key})
        EXPECT_EQ(RegCloseKey(opened), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(first), ERROR_INVALID_HANDLE);

    const Text longName = Text::Widen(std::string(300, 'n'));
    const wchar_t* const tooLong = longName;
    RegCloseKey(Create(tooLong + 45, REG_CREATED_NEW_KEY));
    EXPECT_EQ(RegCreateKeyExW(_key, tooLong, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr), ERROR_INVALID_PARAMETER);
    for (const auto& [path, result] :
        {std::pair(L"outer\\\\Inner", ERROR_SUCCESS), {L"outer\\Other", ERROR_FILE_NOT_FOUND},
            {L"\\outer", ERROR_BAD_PATHNAME}, {tooLong, ERROR_INVALID_PARAMETER}})
    {
        key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(_key, path, 0, KEY_READ, &key), result) << path;
        RegCloseKey(key);
    }
}

TEST_F(Registry, ValuesOfEachTypeComeBackByteForByte)
{
    const std::tuple<const wchar_t*, DWORD, std::string> cases[] = {{nullptr, REG_SZ, std::string("d\0\0\0", 4)},
        {L"number", REG_DWORD, std::string("\x01\x02\x03\xFF", 4)},
        {L"big number", REG_QWORD, std::string("12345678", 8)}, {L"bytes", REG_BINARY, std::string(300, '\xA5')},
        {L"no bytes", REG_BINARY, ""}, {L"expand", REG_EXPAND_SZ, std::string("%\0P\0%\0\0\0", 8)},
        {L"multi", REG_MULTI_SZ, std::string("a\0\0\0b\0\0\0\0\0", 10)}, {L"odd text", REG_SZ, "abc"},
        {L"unterminated", REG_SZ, std::string("a\0b\0", 4)}, {L"empty text", REG_SZ, ""},
        {L"lines", REG_SZ, std::string("a\0\r\0\n\0\"\0\\\0\0\0", 12)},
        {L"lone surrogate", REG_SZ, std::string("\x3D\xD8x\0\0\0", 6)},
        {L"\"quoted\" \\ = name", REG_SZ, std::string("\0\0", 2)}, {L"own type", 0xABCDE, "1"}};
    // The system adds a terminator to a text if one follows in memory.
    for (const auto& [name, type, data] : cases)
        EXPECT_EQ(RegSetValueExW(_key, name, 0, type, reinterpret_cast<const BYTE*>((data + "##").data()),
                      static_cast<DWORD>(data.size())),
            ERROR_SUCCESS);
#ifndef _WIN32 // replaces the file with a copy, so that the layer reads it anew
    const std::string file = OwnRegistryFolder() + "/user.reg";
    std::filesystem::copy_file(file, file + ".copy");
    std::filesystem::rename(file + ".copy", file);
#endif
    for (const auto& [name, expectedType, expected] : cases)
    {
        SCOPED_TRACE(testing::Message() << (name != nullptr ? name : L"@"));
        std::string data(400, '#');
        DWORD size = 400, type = 77;
        EXPECT_EQ(
            RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size), ERROR_SUCCESS);
        data.resize(size);
        EXPECT_EQ(type, expectedType);
        EXPECT_EQ(data, expected);
        if (size != 0)
        {
            EXPECT_EQ(RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &--size),
                ERROR_MORE_DATA);
            EXPECT_EQ(size, expected.size());
        }
    }
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(_key, L"null", 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
}

} // namespace
