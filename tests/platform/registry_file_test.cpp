// The registry's files: text form, damage, other processes.
#include "platform/own_registry.h"
#include "support/run_in_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr char kDigits[] = "0123456789abcdef";
const std::string kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";

// Converts the text to UTF-16 with a byte order mark and with line ends as the system writes them.
std::string ToUtf16(std::u16string_view text)
{
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text)
        (unit == u'\n' ? bytes.append("\r\0", 2) : bytes).append(reinterpret_cast<const char*>(&unit), 2);
    return bytes;
}

class RegistryFile : public testing::Test
{
protected:
    void SetUp() override { fs::remove(_file); }
    void TearDown() override
    {
        setenv("QXPLATFORM_HOME", OwnRegistryFolder().c_str(), 1);
        for (const auto& entry : fs::directory_iterator(OwnRegistryFolder()))
            fs::remove_all(entry.path());
    }

    void WriteFile(const std::string& bytes) { std::ofstream(_file, std::ios::binary) << bytes; }
    std::string ReadFile()
    {
        std::ifstream file(_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static HKEY Open(const wchar_t* name)
    {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
        return key;
    }
    static LSTATUS Create(const wchar_t* name)
    {
        HKEY key = nullptr;
        const LSTATUS status =
            RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        RegCloseKey(key);
        return status;
    }
    static LSTATUS SetNumber(HKEY key, const wchar_t* name, DWORD number)
    {
        return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
    }
    static LSTATUS SetNumber(const wchar_t* keyName, const wchar_t* name, DWORD number)
    {
        const HKEY key = Open(keyName);
        const LSTATUS status = SetNumber(key, name, number);
        RegCloseKey(key);
        return status;
    }
    // Returns the data in hex preceded by the type, or the error if the value can't be read.
    static std::string Value(const wchar_t* keyName, const wchar_t* name)
    {
        HKEY key = nullptr;
        BYTE data[100];
        DWORD size = sizeof(data), type = 0;
        LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, keyName, 0, KEY_READ, &key);
        if (status == ERROR_SUCCESS)
            status = RegQueryValueExW(key, name, nullptr, &type, data, &size);
        RegCloseKey(key);
        if (status != ERROR_SUCCESS)
            return "error " + std::to_string(status);
        std::string text = std::to_string(type) + ':';
        for (DWORD i = 0; i < size; ++i)
            text += {kDigits[data[i] / 16], kDigits[data[i] % 16]};
        return text;
    }

    const std::string _file = OwnRegistryFolder() + "/user.reg";
};

// A file in the export form of the system's editor is written back unchanged.
TEST_F(RegistryFile, WritesTheFormOfTheSystemsEditor)
{
    const std::u16string text = uR"(Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER]

[HKEY_CURRENT_USER\Software]

[HKEY_CURRENT_USER\Software\One]
@="default"
"Binary"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\
  16,17,18,19,1a,1b,1c,1d,1e,1f
"Expand"=hex(2):25,00,41,00,25,00,00,00
"Multi"=hex(7):61,00,00,00,62,00,00,00,00,00
"Number"=dword:0000abcd
"Quote \" \\"="C:\\x \"y\" ü€"
"Qword"=hex(b):01,00,00,00,00,00,00,80

)";
    WriteFile(ToUtf16(text));
    EXPECT_EQ(Value(L"Software\\One", L"qword"), "11:0100000000000080");
    EXPECT_EQ(Value(L"Software\\One", L"quote \" \\"), "1:43003a005c00780020002200790022002000fc00ac200000");
    EXPECT_EQ(SetNumber(L"Software\\One", L"Zero", 0), ERROR_SUCCESS);
    EXPECT_EQ(ReadFile(), ToUtf16(text.substr(0, text.size() - 1) + u"\"Zero\"=dword:00000000\n"));
}

// A file edited by hand, in UTF-8, with all variations that the syntax permits.
TEST_F(RegistryFile, ReadsWhatPeopleWrite)
{
    WriteFile("\xEF\xBB\xBFWindows Registry Editor Version 5.00\n; about all\n\n"
              "[HKEY_CURRENT_USER\\A]  \n  \"blanks\"  =  \"x\"  \n\"\xC3\xBC\"=DWORD:1F ; a note\n"
              "\"bytes\"=HEX:1,02, \\\n\t03,\\\r\n  4\n\"none\"=hex(0):\n\"two\nlines\"=\"a\r\nb\"\n"
              "\"gone\"=\"1\"\n\"GONE\"=-\n\"twice\"=dword:1\n\"Twice\"=dword:2\n"
              "[hkey_current_user\\b\\c]\n@=dword:3\n[-HKEY_CURRENT_USER\\B\\C]\n"
              "[HKEY_CURRENT_USER\\a]\n; about the last\n\"last\"=dword:00000004\n; at the end");
    const std::tuple<const wchar_t*, const wchar_t*, const char*> cases[] = {{L"A", L"blanks", "1:78000000"},
        {L"A", L"Ü", "4:1f000000"}, {L"A", L"bytes", "3:01020304"}, {L"A", L"none", "0:"},
        {L"A", L"two\nlines", "1:61000d000a0062000000"}, {L"A", L"gone", "error 2"}, {L"A", L"twice", "4:02000000"},
        {L"A", L"last", "4:04000000"}, {L"b", nullptr, "error 2"}, {L"b\\c", nullptr, "error 2"}};
    for (const auto& [key, name, value] : cases)
        EXPECT_EQ(Value(key, name), value) << key << L" " << name;

    // Comments written by people survive our changes.
    EXPECT_EQ(SetNumber(L"A", L"blanks", 1), ERROR_SUCCESS);
    const std::string text = ReadFile();
    for (const std::u16string_view lines : {u"; about all\n[HKEY_CURRENT_USER\\A]"sv,
             u"; a note\n\"\u00FC\"=dword:0000001f"sv, u"; about the last\n\"last\"="sv, u"\n; at the end\n"sv})
        EXPECT_NE(text.find(ToUtf16(lines).substr(2)), std::string::npos) << ToUtf16(lines);
}

TEST_F(RegistryFile, DamageIsReadAroundAndNeverWrittenOver)
{
    const std::string good = kHeader + "[HKEY_CURRENT_USER\\k]\r\n\"v\"=dword:00000001\r\n";
    // Invalid text after a valid key, and invalid whole files.
    const std::string lines[] = {"\"open=\"x", "\"x\"=\"abc", "\"x\"=\"a\\n\"", "\"x\"=dword:123456789", "\"x\"=hex:0g",
        "\"x\"=hex:00,\\ 01", "x=1", "[HKEY_CURRENT_USER\\k", "[HKEY_LOCAL_MACHINE\\k]\r\n\"v\"=dword:00000002",
        "[HKEY_CURRENT_USER\\" + std::string(256, 'n') + "]", "[-HKEY_CURRENT_USER]", "\"\xFF\"=\"x\"",
        std::string(3, '\0')};
    std::vector<std::string> bad = {"\"v\"=dword:00000002\r\n", "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\k]\r\n",
        kHeader + "\"v\"=dword:00000002\r\n" + good.substr(kHeader.size()), "\xFF\xFEW"};
    for (const std::string& line : lines)
        bad.push_back(good + line + "\r\n");
    for (const std::string& bytes : bad)
    {
        SCOPED_TRACE(bytes);
        WriteFile(bytes);
        const bool readable = bytes.find("[HKEY_CURRENT_USER\\k]\r\n\"v\"") != std::string::npos;
        EXPECT_EQ(Value(L"k", L"v"), readable ? "4:01000000" : "error 2");
        EXPECT_EQ(Create(L"new"), ERROR_REGISTRY_CORRUPT);
        EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, L"v", 9), ERROR_REGISTRY_CORRUPT);
        EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"k"), readable ? ERROR_REGISTRY_CORRUPT : ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(ReadFile(), bytes);
    }
    WriteFile("");
    EXPECT_EQ(Create(L"new"), ERROR_SUCCESS) << "an empty file holds nothing to lose";
}

TEST_F(RegistryFile, WhatCouldNotBeReadBackIsNotWritten)
{
    std::u16string path;
    for (int i = 0; i < 512; ++i)
        path += u"k\\";
    EXPECT_EQ(Create(reinterpret_cast<const wchar_t*>((path + u"k").c_str())), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Create(reinterpret_cast<const wchar_t*>(path.c_str())), ERROR_SUCCESS);
    const HKEY key = Open(L"k");
    ASSERT_EQ(SetNumber(key, L"v", 1), ERROR_SUCCESS);
    const std::vector<BYTE> data(12 << 20); // each byte takes six bytes of the file
    EXPECT_EQ(RegSetValueExW(key, L"v", 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size())),
        ERROR_NO_SYSTEM_RESOURCES);
    EXPECT_EQ(Value(L"k", L"v"), "4:01000000");
    RegCloseKey(key);

    std::string text = kHeader + "[HKEY_CURRENT_USER";
    for (int i = 0; i < 1000000; ++i)
        text += "\\k";
    WriteFile(text + "]\r\n");
    EXPECT_EQ(Create(L"x"), ERROR_REGISTRY_CORRUPT) << "deeper than any that we write";
}

TEST_F(RegistryFile, ChangesOfOthersAreSeenAtOnce)
{
    ASSERT_EQ(Create(L"k"), ERROR_SUCCESS);
    const HKEY key = Open(L"k");
    ASSERT_EQ(SetNumber(key, L"v", 1), ERROR_SUCCESS);
    std::string text = ReadFile();
    for (char digit = '2'; digit <= '9'; ++digit)
    {
        // Changes the file in place, with the same size, as quickly as possible.
        text[text.rfind(static_cast<char>(digit - 1))] = digit;
        WriteFile(text);
        EXPECT_EQ(Value(L"k", L"v"), std::string("4:0") + digit + "000000");
    }
    fs::remove(_file);
    EXPECT_EQ(SetNumber(key, L"v", 1), ERROR_KEY_DELETED);
    RegCloseKey(key);
}

// Four processes, each with two threads that write their own values and read them back.
TEST_F(RegistryFile, NobodyLosesTheChangesOfOthers)
{
    ASSERT_EQ(Create(L"k"), ERROR_SUCCESS);
    constexpr int kProcesses = 4, kThreads = 2, kValues = 15;
    const auto write = [](int writer, std::atomic<int>& failures)
    {
        for (unsigned char i = 0; i < kValues; ++i)
        {
            const wchar_t name[] = {static_cast<wchar_t>(L'a' + writer), static_cast<wchar_t>(L'a' + i), L'\0'};
            failures += SetNumber(L"k", name, i) != ERROR_SUCCESS;
            failures += Value(L"k", name) != std::string("4:0") + kDigits[i] + "000000";
        }
    };
    for (int process = 0; process < kProcesses; ++process)
        if (fork() == 0)
        {
            std::atomic<int> failures = 0;
            qxtest::RunInThreads(kThreads, [&](int thread) { write(kThreads * process + thread, failures); });
            _exit(failures);
        }
    for (int process = 0; process < kProcesses; ++process)
    {
        int status = -1;
        ASSERT_GT(wait(&status), 0);
        EXPECT_EQ(status, 0);
    }
    const std::string text = ReadFile();
    EXPECT_EQ(std::count(text.begin(), text.end(), '='), kProcesses * kThreads * kValues);
}

TEST_F(RegistryFile, KeepsModeAndLinksOfTheFile)
{
    ASSERT_EQ(Create(L"first"), ERROR_SUCCESS);
    struct stat status;
    ASSERT_EQ(stat(_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    const std::string real = OwnRegistryFolder() + "/elsewhere.reg";
    fs::rename(_file, real);
    fs::create_symlink(real, _file);
    chmod(real.c_str(), 0640);
    ASSERT_EQ(Create(L"second"), ERROR_SUCCESS);
    EXPECT_TRUE(fs::is_symlink(_file));
    ASSERT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(RegistryFile, WithoutAUsableFolderReadingFindsNothingAndWritingFails)
{
    const auto open = [](HKEY root)
    {
        HKEY key = nullptr;
        return RegOpenKeyExW(root, L"Software", 0, KEY_READ, &key);
    };
    WriteFile("");
    for (const std::string& folder : {std::string("/proc/qxplatform"), _file + "/below"})
    {
        setenv("QXPLATFORM_HOME", folder.c_str(), 1);
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        {
            EXPECT_EQ(open(root), ERROR_FILE_NOT_FOUND) << folder;
            EXPECT_NE(SetNumber(root, L"v", 1), ERROR_SUCCESS);
        }
        EXPECT_NE(Create(L"Software"), ERROR_SUCCESS) << folder;
    }
    setenv("QXPLATFORM_HOME", (OwnRegistryFolder() + "/made/at/once").c_str(), 1);
    EXPECT_EQ(Create(L"Software"), ERROR_SUCCESS);
    // If the path is occupied by something other than a file, the layer neither blocks on it nor replaces it.
    const std::string odd = OwnRegistryFolder() + "/odd";
    fs::create_directory(odd);
    ASSERT_EQ(mkfifo((odd + "/user.reg").c_str(), 0600), 0);
    fs::create_directory(odd + "/machine.reg");
    setenv("QXPLATFORM_HOME", odd.c_str(), 1);
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        EXPECT_EQ(SetNumber(root, L"v", 1), ERROR_CANTREAD);
        EXPECT_EQ(open(root), ERROR_CANTREAD);
    }
}

} // namespace
