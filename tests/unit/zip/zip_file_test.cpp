// Archives byte by byte as written.
#include "zip/zip_file.h"

#include "support/debug_lines.h"
#include "support/fake_stream.h"
#include "support/filled.h"
#include "support/record_bytes.h"
#include "support/temp_folder.h"
#include "support/zip_archive.h"
#include "unit/files/own_temp_folder.h"
#include "zip/dos_time.h"
#include "zip/names.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <tuple>

using namespace qx;
using namespace qxtest;
namespace fs = std::filesystem;

namespace qx
{

struct ZIPFileTestAccess
{
    static WCPtrSList<clsZIPFileEntry>& Entries(clsZIPFile& file) { return file._entries; }
    static clsFile& Archive(clsZIPFile& file) { return file._archive; }
};

} // namespace qx

namespace
{

const OwnTempFolder& tempFolder = TempFolderOfTests();

using Bytes = std::string;

Bytes operator""_b(const char* bytes, std::size_t count)
{
    return {bytes, count};
}

// Closes the file and parses the archive.
std::vector<ZIPEntry> Closed(std::unique_ptr<clsZIPFile> file, const String& path)
{
    EXPECT_EQ(file->Close(), clsZIPFile::kOk);
    file.reset();
    return EntriesOf(BytesOf(path));
}

FILETIME TimeOf(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second)
{
    const SYSTEMTIME time{year, month, 0, day, hour, minute, second, 0};
    FILETIME result{};
    EXPECT_TRUE(SystemTimeToFileTime(&time, &result));
    return result;
}

// top.log, top.txt, x/a.log, x/b.txt, x/deep/c, empty/
void MakeTree(const fs::path& root)
{
    fs::create_directories(root / "x/deep");
    fs::create_directories(root / "empty");
    for (const char* name : {"top.log", "top.txt", "x/a.log", "x/b.txt", "x/deep/c"})
        fclose(fopen((root / name).string().c_str(), "w"));
}

std::set<Bytes> NamesOf(const std::vector<ZIPEntry>& entries)
{
    std::set<Bytes> names;
    for (const ZIPEntry& entry : entries)
        EXPECT_TRUE(names.insert(entry.name).second) << entry.name;
    return names;
}

class ZIPFile : public testing::Test
{
protected:
    const TempFolder folder;
    const String source = folder.Make(L"source", "x"), path = folder.Path(L"x.zip");
};

// Returns the DOS time stamp of a time in the user's zone.
scDosTime Stamp(const FILETIME& universal)
{
    SYSTEMTIME time, local;
    FileTimeToSystemTime(&universal, &time);
    SystemTimeToTzSpecificLocalTime(nullptr, &time, &local);
    return {static_cast<std::uint16_t>((local.wYear - 1980) * 512 + local.wMonth * 32 + local.wDay),
        static_cast<std::uint16_t>(local.wHour * 2048 + local.wMinute * 32 + local.wSecond / 2)};
}

} // namespace

TEST_F(ZIPFile, EveryByte)
{
    MakeFile(source, "");
    const FILETIME time = TimeOf(2024, 7, 14, 12, 34, 57);
    SetWriteTime(source, time);
    WIN32_FIND_DATAW found{};
    found.dwFileAttributes = 0x12345610;
    found.ftLastWriteTime = time;

    {
        clsZIPFile file(path, L"end");
        EXPECT_EQ(file.AddFile(source, L"sub\\a.txt", L"note"), clsZIPFile::kOk);
        file.AddDirectory(L"", L"d", found);
        EXPECT_EQ(BytesOf(path), "") << "nothing is written before the end";
        EXPECT_EQ(file.Close(), clsZIPFile::kOk);
    }
    const scDosTime stamp = Stamp(time);
    const Bytes when = BytesOfRecord<std::uint16_t>(stamp.time) + BytesOfRecord<std::uint16_t>(stamp.date);
    const Bytes attributes = BytesOfRecord(GetFileAttributesW(source));
    const Bytes fileHeader = "\x14\0\0\0\x08\0"_b + when + "\0\0\0\0\2\0\0\0\0\0\0\0\x09\0\0\0"_b;
    const Bytes folderHeader = "\x14\0\0\0\0\0"_b + when + "\0\0\0\0\0\0\0\0\0\0\0\0\2\0\0\0"_b;
    EXPECT_EQ(BytesOf(path),
        // the records are at 0, 41 and 73
        "PK\3\4" + fileHeader + "sub/a.txt\3\0"_b + "PK\3\4" + folderHeader + "d/" + "PK\1\2\x14\x0A"_b + fileHeader +
            "\4\0\0\0\0\0"_b + attributes + "\0\0\0\0sub/a.txtnote"_b + "PK\1\2\x14\x0A"_b + folderHeader +
            "\0\0\0\0\0\0\x10\x56\x34\x12\x29\0\0\0d/"_b + "PK\5\6\0\0\0\0\2\0\2\0\x6B\0\0\0\x49\0\0\0\3\0end"_b);
}

TEST_F(ZIPFile, WithoutEntries)
{
    MakeFile(path, "what was there before");
    EXPECT_EQ(clsZIPFile(path, L"").Close(), clsZIPFile::kOk);
    EXPECT_EQ(BytesOf(path), "PK\5\6"_b + Bytes(18, '\0'));
    EXPECT_EQ(clsZIPFile(path, Filled(L'c', 70000)).Close(), clsZIPFile::kOk);
    EXPECT_EQ(BytesOf(path), "PK\5\6"_b + Bytes(16, '\0') + Bytes(2 + 65535, 'c').replace(0, 2, "\xFF\xFF"));
    EXPECT_FALSE(clsZIPFile(folder.Path(L"none/x.zip"), L"").IsOpen());
}

TEST(ZIPNames, DriveAndServerGo)
{
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {{L"C:\\dir\\a.txt", L"", L"/dir/a.txt"},
        {L"c:a.txt", L"", L"a.txt"}, {L"c:", L"", L""}, {L"C:\\dir\\a.txt", L"sub\\a.txt", L"sub/a.txt"},
        {L"C:\\dir\\a.txt", L"z:\\b", L"/b"}, {L"\\\\server\\share\\a", L"", L"/share/a"},
        {L"x", L"\\\\server\\share\\sub\\a", L"/share/sub/a"}, {L"\\\\server", L"", L"//server"},
        {L"//server/share/a", L"", L"//server/share/a"}, {L"\\a\\b", L"", L"/a/b"}, {L"dir\\c:\\a", L"", L"dir/c:/a"},
        {L"1:\\a", L"", L"1:/a"}, {L"/home/a.txt", L"", L"/home/a.txt"}, {L"a\\b//c\\", L"", L"a/b//c/"}};
    for (const auto& [path, given, stored] : cases)
        EXPECT_STREQ(StoredNameOf(path, given), stored)
            << String(path).NarrowText() << ' ' << String(given).NarrowText();
}

TEST_F(ZIPFile, EncodingOfNameAndComment)
{
    const std::tuple<const wchar_t*, const wchar_t*, unsigned, Bytes, Bytes> cases[] = {
        {L"\u00E4.txt", L"\u00DF", 0, "\x84.txt", "\xE1"}, {L"\u2592\u0393", L"", 0, "\xB1\xE2", ""},
        {L"\u20AC.txt", L"\u00E4", 0x800, "\xE2\x82\xAC.txt", "\xC3\xA4"},
        {L"plain", L"\u20AC", 0x800, "plain", "\xE2\x82\xAC"},
        {L"\u0141\u00F3d\u017A", L"", 0x800, "\xC5\x81\xC3\xB3\x64\xC5\xBA",
            ""}, // code page 437 has only similar letters
        {L"\U0001F600", L"", 0x800, "\xF0\x9F\x98\x80", ""}};
    auto file = std::make_unique<clsZIPFile>(path, L"");
    WIN32_FIND_DATAW found{};
    for (const auto& [name, comment, flags, nameBytes, commentBytes] : cases)
    {
        EXPECT_EQ(file->AddFile(source, name, comment), clsZIPFile::kOk);
        file->AddDirectory(L"", name, found);
    }
    const std::vector<ZIPEntry> entries = Closed(std::move(file), path);
    ASSERT_EQ(entries.size(), 2 * std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i)
    {
        const auto& [name, comment, flags, nameBytes, commentBytes] = cases[i];
        const ZIPEntry& entry = entries[2 * i];
        EXPECT_EQ(FieldValue(entry.header.flags), flags) << i;
        EXPECT_EQ(entry.name, nameBytes);
        EXPECT_EQ(entry.comment, commentBytes);
        EXPECT_EQ(entry.content, "x");
        // For a folder only the name counts.
        const ZIPEntry& folderEntry = entries[2 * i + 1];
        EXPECT_EQ(FieldValue(folderEntry.header.flags), IsOemText(name) ? 0 : 0x800) << i;
        EXPECT_EQ(folderEntry.name, nameBytes + '/');
    }
    EXPECT_TRUE(fs::is_empty(fs::path(tempFolder.Path(L"trelmo").NarrowText()))) << "the temporary files go";
}

TEST_F(ZIPFile, LengthFieldsAndTheBytesBehindThemStayTogether)
{
    auto file = std::make_unique<clsZIPFile>(path, L"");
    file->AddFile(source, Filled(L'n', 0x10003), Filled(L'c', 0x10003));
    const std::vector<ZIPEntry> entries = Closed(std::move(file), path);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].name, "nnn") << "the low 16 bits of the length";
    EXPECT_EQ(entries[0].comment, Bytes(0xFFFF, 'c'));
}

TEST(ZIPFileTimes, AreLocalAndBounded)
{
    SetEnvironmentVariableW(L"TZ", L"America/New_York"); // the layer's zone; another system isn't affected
    const FILETIME winter = TimeOf(2024, 1, 31, 12, 0, 1), last = TimeOf(2107, 12, 30, 0, 0, 0);
    const std::pair<FILETIME, scDosTime> cases[] = {{winter, Stamp(winter)}, {last, Stamp(last)},
        {TimeOf(1970, 1, 2, 0, 0, 0), {0x0021, 0}}, {TimeOf(2108, 1, 3, 0, 0, 0), {0xFF9F, 0xBF7D}}};
    const auto number = [](const scDosTime& time)
    {
        return unsigned{time.date} << 16 | time.time;
    };
    for (const auto& [time, stamp] : cases)
        EXPECT_EQ(number(DosTimeOf(time)), number(stamp));
    // If the last write time of the file isn't available, the current time is used.
    FILETIME before, after;
    GetSystemTimeAsFileTime(&before);
    const unsigned now = number(DosTimeNow());
    GetSystemTimeAsFileTime(&after);
    EXPECT_GE(now, number(Stamp(before)));
    EXPECT_LE(now, number(Stamp(after)));
}

TEST_F(ZIPFile, Lists)
{
    const fs::path root = NativePath(folder.Path()) / "tree";
    MakeTree(root);
    const String base = folder.Path(L"tree");
    const std::tuple<const wchar_t*, std::uint32_t, std::set<Bytes>> cases[] = {{L"*.*", 0, {"top.log", "top.txt"}},
        {L"*.log", 0, {"top.log"}}, {L"*.none", 0, {}},
        {L"*.log", clsZIPFile::kSubfolders, {"top.log", "x/", "x/a.log", "x/b.txt", "x/deep/", "x/deep/c", "empty/"}},
        {L"*.*", 0xFFFFFFFF, {"top.log", "top.txt", "x/", "x/a.log", "x/b.txt", "x/deep/", "x/deep/c", "empty/"}}};
    for (const auto& [pattern, flags, names] : cases)
        for (const wchar_t* separator : {L"", L"\\", L"/"})
        {
            auto file = std::make_unique<clsZIPFile>(path, L"");
            file->AddList(base + separator, String(), pattern, flags);
            const std::vector<ZIPEntry> entries = Closed(std::move(file), path);
            EXPECT_EQ(NamesOf(entries), names);
            std::set<Bytes> folders{""};
            for (const ZIPEntry& entry : entries)
            {
                const std::size_t slash = entry.name.rfind('/', entry.name.size() - 2);
                EXPECT_EQ(folders.count(slash == Bytes::npos ? "" : entry.name.substr(0, slash + 1)), 1u)
                    << entry.name << " stands in front of its folder";
                if (entry.name.back() != '/')
                    continue;
                folders.insert(entry.name);
                EXPECT_EQ(entry.header.externalAttributes & FILE_ATTRIBUTE_DIRECTORY, DWORD{FILE_ATTRIBUTE_DIRECTORY});
            }
        }

    // Links that go in circles
    std::error_code error;
    for (const auto& [link, target] : {std::pair("x/up", ".."), {"x/here", "."}, {"x/aside", "../empty"}})
        fs::create_directory_symlink(target, root / link, error);
    if (error)
        GTEST_SKIP() << "no links to folders here";
    auto file = std::make_unique<clsZIPFile>(path, L"");
    file->AddList(base, String(), L"*.log", clsZIPFile::kSubfolders);
    EXPECT_EQ(NamesOf(Closed(std::move(file), path)), (std::set<Bytes>{"top.log", "x/", "x/a.log", "x/b.txt", "x/deep/",
                                                          "x/deep/c", "x/up/", "x/here/", "x/aside/", "empty/"}));
}

TEST_F(ZIPFile, WhatCannotBeAdded)
{
    const String large = folder.Make(L"large", "");
    {
        clsFileRW file(large, FileAccess::ReadWrite, FileDisposition::OpenExisting, FileShare::None, kFileData);
        file.Seek(0x100000000);
        file.SetEOF();
    }
    auto file = std::make_unique<clsZIPFile>(path, L"");
    DebugLines lines;
    EXPECT_EQ(file->AddFile(folder.Path(L"missing"), L"", L""), clsZIPFile::kCannotOpen);
    EXPECT_EQ(file->AddFile(folder.Path(), L"", L""), clsZIPFile::kCannotOpen);
    EXPECT_EQ(file->AddFile(L"", L"name", L""), clsZIPFile::kCannotOpen);
    EXPECT_EQ(lines.Count(), 0u);
    EXPECT_EQ(file->AddFile(large, L"", L""), clsZIPFile::kCannotStore);
    EXPECT_STREQ(lines.Only(), L"ERR: source size > 4GB");
    EXPECT_EQ(file->AddFile(source, L"good", L""), clsZIPFile::kOk);
    const std::vector<ZIPEntry> entries = Closed(std::move(file), path);
    ASSERT_EQ(entries.size(), 1u) << "the others left nothing behind";
    EXPECT_EQ(entries[0].content, "x");
}

TEST_F(ZIPFile, WithoutAPlaceForTemporaryFiles)
{
    wchar_t program[MAX_PATH] = {}; // in another folder
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const String outside = tempFolder.Path() + L".zip";
    clsZIPFile file(outside, L"");
    const fs::path temp = NativePath(tempFolder.Path());
    fs::rename(temp, temp.string() + "-away");
    DebugLines lines;
    EXPECT_EQ(file.AddFile(program, L"", L""), clsZIPFile::kCannotStore);
    EXPECT_STREQ(lines.Last(), String(String::kFormatted, L"ERR while compressing file '%s': -5", program));
    fs::rename(temp.string() + "-away", temp);
    ZIPFileTestAccess::Archive(file).Close();
    DeleteFileW(outside);
}

TEST_F(ZIPFile, TooManyEntries)
{
    clsZIPFile file(path, L"");
    file.AddDirectory(L"", L"d", WIN32_FIND_DATAW{});
    auto& entries = ZIPFileTestAccess::Entries(file);
    clsZIPFileEntry* const entry = *entries.begin();
    while (entries.Count() < 0x10000) // adds the same entry many times, which needs no files
        entries.Append(entry);
    {
        DebugLines lines;
        EXPECT_EQ(file.Close(), clsZIPFile::kCannotWrite);
        EXPECT_STREQ(
            lines.Only(), String(String::kFormatted, L"ERR: more than 65535 entries in ZIP file '%s'", path.Text()));
    }
    ZIPFileTestAccess::Archive(file).Close();
    EXPECT_EQ(BytesOf(path), "");

    ZIPFileTestAccess::Archive(file).Open(
        path, FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::None, kFileData);
    entries.TakeAt(0);
    EXPECT_EQ(file.Close(), clsZIPFile::kOk);
    entries.Clear();
    entries.Append(entry);
    ZIPFileTestAccess::Archive(file).Close();
    const Bytes bytes = BytesOf(path);
    ASSERT_EQ(bytes.size(), 0xFFFFu * (30 + 2 + 46 + 2) + 22);
    EXPECT_EQ(bytes.substr(bytes.size() - 22, 12), "PK\5\6\0\0\0\0\xFF\xFF\xFF\xFF"_b);
}

// The archive has a header of 30 bytes, a name of 1, packed data of 3, a directory of 47 and an end record of 22 bytes.
TEST_F(ZIPFile, WriteErrors)
{
    for (const auto& [room, place] :
        {std::pair(0, 1), {29, 1}, {30, 1}, {31, 2}, {33, 2}, {34, 4}, {80, 4}, {81, 5}, {102, 5}, {103, 0}})
    {
        FakeStream stream;
        stream.room = static_cast<std::size_t>(room);
        clsZIPFile file(path, L"");
        EXPECT_EQ(file.AddFile(source, L"a", L""), clsZIPFile::kOk);
        ZIPFileTestAccess::Archive(file).AttachStream(&stream);
        DebugLines lines;
        EXPECT_EQ(file.Close(), place == 0 ? clsZIPFile::kOk : clsZIPFile::kCannotWrite);
        EXPECT_STREQ(
            lines.Last(), place == 0 ? String() : String(String::kFormatted, L"ERR: write error file '' (%d)", place))
            << room;
    }
}
