// Extraction of archives that various programs have written, and its confinement to the target folder.
#include "zip/extraction.h"

#include "files/path_separator.h"
#include "support/temp_folder.h"
#include "support/zip_archive.h"
#include "support/zip_builder.h"
#include "zip/exception.h"
#include "zip/member_name.h"
#include "zip/unzipper.h"
#include "zip/zip_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

using namespace qx;
using namespace qxtest;
namespace fs = std::filesystem;

namespace
{

std::string Utf8(const fs::path& path)
{
    const auto text = path.generic_u8string();
    return {text.begin(), text.end()};
}

// Maps relative paths in UTF-8, with a trailing slash for folders, to file contents.
using Tree = std::map<std::string, std::string>;

// A target folder inside another one, with a witness file next to it.
class Place
{
public:
    Place() { _outer.Make(L"witness", "untouched"); }

    String Folder() const { return _outer.Path(L"inner"); }
    Tree Extracted() const
    {
        Tree tree;
        const fs::path root = NativePath(Folder());
        if (!fs::exists(root))
            return tree;
        for (const auto& entry : fs::recursive_directory_iterator(root))
        {
            std::ostringstream content;
            if (!entry.is_directory() && entry.file_size() != 0)
                content << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            tree[Utf8(entry.path().lexically_relative(root)) + (entry.is_directory() ? "/" : "")] = content.str();
        }
        return tree;
    }

    // Returns the exception's text, or an empty text if none was thrown.
    std::string Extract(std::string_view bytes) const { return ExtractFile(_outer.Make(L"x.zip", bytes)); }
    std::string ExtractFile(const String& archive) const
    {
        try
        {
            ExtractZip(archive, Folder());
            return {};
        }
        catch (const std::exception& exception)
        {
            return exception.what();
        }
    }

    void ExpectNothingOutside() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(NativePath(_outer.Path())))
            names.insert(Utf8(entry.path().filename()));
        names.erase("inner");
        EXPECT_EQ(names, (std::set<std::string>{"witness", "x.zip"}));
        EXPECT_EQ(BytesOf(_outer.Path(L"witness")), "untouched");
    }

private:
    TempFolder _outer;
};

std::string PlainText()
{
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "line " + std::to_string(i) + " of a text that packs well\n";
    return text;
}

} // namespace

TEST(Unzipper, ArchivesOfOtherPrograms)
{
    const std::string umlauts = "Gr\xC3\xB6\xC3\x9F", japanese = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";
    const Tree plain = {{"plain.txt", PlainText()}};
    const Tree whole = {{"plain.txt", PlainText()}, {"none", ""}, {"empty/", ""}, {"sub/", ""},
        {"sub/" + umlauts + "e.txt", umlauts + "e und Ma\xC3\x9F\n"}, {"sub/" + japanese + "/", ""},
        {"sub/" + japanese + "/\xC3\xBC.txt", japanese + "\n"}};
    const std::tuple<const wchar_t*, Tree, const char*> cases[] = {{L"infozip.zip", whole, ""},
        {L"infozip-stored.zip", whole, ""}, {L"infozip-streamed.zip", whole, ""},
        {L"infozip-streamed-zip64.zip", {{"-", PlainText()}}, ""}, {L"infozip-zip64.zip", whole, ""},
        {L"7zip.zip", whole, ""}, {L"7zip-local.zip", whole, ""}, {L"libarchive.zip", whole, ""},
        {L"libarchive-streamed.zip", whole, ""}, {L"python.zip", whole, ""}, {L"python-streamed.zip", whole, ""},
        {L"python-zip64.zip", plain, ""}, {L"infozip-encrypted.zip", {}, "The zip entry 'plain.txt' is encrypted"},
        {L"7zip-aes.zip", {}, "The zip entry 'plain.txt' is encrypted"},
        {L"infozip-bzip2.zip", {}, "The zip entry 'plain.txt' is packed by method 12, which can't be unpacked"},
        {L"7zip-bzip2.zip", {}, "The zip entry 'plain.txt' is packed by method 12, which can't be unpacked"},
        {L"7zip-deflate64.zip", {}, "The zip entry 'plain.txt' is packed by method 9, which can't be unpacked"},
        {L"7zip-lzma.zip", {}, "The zip entry 'plain.txt' is packed by method 14, which can't be unpacked"},
        {L"infozip-link.zip", plain, "The zip entry 'link' is a link, which may lead out of the folder"}};
    for (const auto& [archive, tree, exception] : cases)
    {
        SCOPED_TRACE(String(archive).NarrowText());
        const Place place;
        EXPECT_EQ(place.ExtractFile(String(L"" QXUT_TEST_DATA "/zip/") + archive), exception);
        EXPECT_EQ(place.Extracted(), tree);
    }
}

TEST(Unzipper, DocumentsOfOfficePrograms)
{
    for (const auto& [document, members] :
        {std::pair(L"letter.odt", std::vector<const char*>{"mimetype", "content.xml", "META-INF/manifest.xml"}),
            {L"letter.docx", {"[Content_Types].xml", "docProps/core.xml", "word/document.xml"}}})
    {
        const Place place;
        EXPECT_EQ(place.ExtractFile(String(L"" QXUT_TEST_DATA "/zip/") + document), "");
        for (const char* member : members)
            EXPECT_FALSE(place.Extracted()[member].empty()) << member;
    }
}

TEST(Unzipper, WithoutEntriesAndWithoutAnArchive)
{
    const Place place;
    EXPECT_EQ(place.Extract(Build({}, "comment")), "");
    EXPECT_EQ(place.Extracted(), Tree());
    for (const char* bytes : {"", "P", "no archive at all, but more bytes than an end record has"})
        EXPECT_EQ(place.Extract(bytes), "Error loading zip file!");
    for (const String& path : {place.Folder(), place.Folder() + L"/missing.zip", String()})
        EXPECT_EQ(place.ExtractFile(path), "Error loading zip file!");
}

TEST(Unzipper, ExactlyAsManyEntriesAsTheFieldCounts)
{
    const Place place;
    std::vector<BuiltMember> members(65534, BuiltMember("d/", "", 0));
    members.emplace_back("last", "here");
    EXPECT_EQ(place.Extract(Build(members)), "");
    EXPECT_EQ(place.Extracted(), (Tree{{"d/", ""}, {"last", "here"}}));
}

TEST(Unzipper, NamesThatAreRefused)
{
    // Names that windows forbids are accepted on systems with POSIX names.
    const std::string notOnWindows = kHasPosixFiles ? "" : "has a name that no file may have";
    const std::tuple<std::string, unsigned, std::vector<std::string>> cases[] = {
        {"leads out of the folder", 0,
            {"/absolute", "\\absolute", "//server/share", "..", "../witness", "..\\witness", "a/../../witness",
                "a\\..\\..\\witness", "a/../b", "../inner/x", "../", "c:\\witness", "z:/"}},
        {"leads out of the folder", 0100644, {"/absolute", "//server/share", "..", "../witness", "a/../b", "../"}},
        {kHasPosixFiles ? "" : "leads out of the folder", 0100644, {"c:/witness"}},
        {notOnWindows, 0100644,
            {"a/c:/b", "witness:stream", ".. /witness", ".../witness", ". ./witness", "a./b", "nul", "a/Con.txt",
                "aux .tar.gz", "a?b", "tab\there", "trailing."}},
        {"has a name that no file may have", 0, {std::string("a\0b", 3), std::string(300, 'n')}},
        {"has no name", 0, {"", "."}}};
    for (const auto& [problem, mode, names] : cases)
        for (const std::string& name : names)
            for (const unsigned flags : {0u, unsigned{kZipFlagUtf8}})
            {
                SCOPED_TRACE(name);
                const Place place;
                BuiltMember member = BuiltMember(name, "evil").Flags(flags);
                if (mode != 0)
                    member.Mode(mode);
                const std::string text =
                    place.Extract(Build({BuiltMember("first", "1"), member, BuiltMember("last", "2")}));
                Tree tree = place.Extracted();
                EXPECT_EQ(tree["first"] + tree["last"], "12") << "the others are extracted";
                if (problem.empty())
                {
                    EXPECT_EQ(text, "");
                    EXPECT_EQ(tree[name], "evil");
                }
                else
                {
                    EXPECT_NE(text.find(problem), std::string::npos) << text;
                    EXPECT_EQ(tree.size(), 2u);
                }
                place.ExpectNothingOutside();
            }
}

TEST(Unzipper, BackslashesBelongToNamesOfPosix)
{
    const Place place;
    EXPECT_EQ(place.Extract(Build({BuiltMember("a\\b", "dos"), BuiltMember("c\\d", "unix").Mode(0100644),
                  BuiltMember("..\\witness", "no way out").Mode(0100644)})) == "",
        kHasPosixFiles);
    const Tree windows = {{"a/", ""}, {"a/b", "dos"}, {"c/", ""}, {"c/d", "unix"}};
    const Tree posix = {{"a/", ""}, {"a/b", "dos"}, {"c\\d", "unix"}, {"..\\witness", "no way out"}};
    EXPECT_EQ(place.Extracted(), kHasPosixFiles ? posix : windows);
    place.ExpectNothingOutside();
}

TEST(Unzipper, ModesAndLinks)
{
    if (!kHasPosixFiles)
        GTEST_SKIP() << "files have no modes and links here";
    const Place place;
    const fs::path root = NativePath(place.Folder());
    const auto link = [](const std::string& name, const std::string& target)
    {
        return BuiltMember(name, target, 0).Mode(0120777);
    };
    const std::vector<BuiltMember> members = {BuiltMember("run", "x").Mode(0106755),
        BuiltMember("secret", "x").Mode(0100600), BuiltMember("fixed", "x").Mode(0100444), link("a/b/up", "../../run"),
        link("a/here", "."), link("dangling", "none"), link("out", "../witness"), link("a/out", "../../witness"),
        link("top", "/etc/passwd"), link("a/b/twice", "up/../.."), link("sub", "a"),
        BuiltMember("sub/x", "a folder before the link")};
    std::string text;
    for (int i = 0; i < 2; ++i) // the second round overwrites the files of the first
        text = place.Extract(Build(members));
    EXPECT_EQ(text, "The zip entry 'out' is a link, which may lead out of the folder (and 4 more)");
    const auto mode = [&](const char* name)
    {
        return static_cast<unsigned>(fs::status(root / name).permissions());
    };
    EXPECT_EQ(mode("run") & 07100, 0100u) << "no other user's rights";
    EXPECT_EQ(mode("secret"), 0600u);
    EXPECT_EQ(mode("fixed") & 0222, 0u);
    for (const auto& [name, target] : {std::pair("a/b/up", "../../run"), {"a/here", "."}, {"dangling", "none"}})
        EXPECT_EQ(fs::read_symlink(root / name), target);
    for (const char* name : {"out", "a/out", "top", "a/b/twice"})
        EXPECT_FALSE(fs::exists(fs::symlink_status(root / name))) << name;
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(root / "sub"))) << "a link isn't made in the place of a folder";

    // Links in front of a damaged part of the directory are created.
    std::string bytes = Build({link("early", "run"), BuiltMember("last", "x")});
    bytes[bytes.rfind("PK\1\2")] = 'X';
    EXPECT_EQ(place.Extract(bytes), "The directory of the zip file is damaged");
    EXPECT_EQ(fs::read_symlink(root / "early"), "run");
    place.ExpectNothingOutside();
}

TEST(Unzipper, OddArchives)
{
    constexpr auto kNumber = BytesOfRecord<std::uint64_t>;
    constexpr std::uint64_t kFourGB = std::uint64_t{1} << 32;
    const std::string content = PlainText();
    for (const std::uint16_t method : {std::uint16_t{0}, std::uint16_t{8}})
        for (const auto& [more, isWhole] : {std::pair(kFourGB, true), {3 * kFourGB, true}, {kFourGB + 1, false}})
        {
            BuiltMember member("m", content, method);
            const std::uint64_t packed = member.central.compressedSize;
            member.central.compressedSize = member.central.uncompressedSize = 0xFFFFFFFF;
            const Place place;
            EXPECT_EQ(place.Extract(Build({member.Extra(std::string("\1\0\x10\0", 4) + kNumber(content.size() + more) +
                                                        kNumber(packed + more))})) == "",
                isWhole)
                << method << ' ' << more;
            EXPECT_EQ(place.Extracted(), isWhole ? Tree({{"m", content}}) : Tree());
        }
    // An end record that contradicts a ZIP64 one.
    std::string bytes = Build({BuiltMember("a", "1"), BuiltMember("b", "2")});
    const std::size_t at = bytes.size() - sizeof(scZIPEndRecord);
    auto end = RecordAt<scZIPEndRecord>(bytes, at);
    const std::string record = "PK\6\6" + kNumber(44) + std::string("\x2D\0\x2D\0", 4) + kNumber(0) + kNumber(2) +
                               kNumber(2) + kNumber(end.directorySize) + kNumber(end.directoryOffset);
    const std::string locator = std::string("PK\6\7\0\0\0\0", 8) + kNumber(at) + std::string("\1\0\0\0", 4);
    end.entries = end.entriesOnDisk = 1;
    end.directorySize += 100;
    end.directoryOffset = 7;
    bytes = bytes.substr(0, at) + record + locator + BytesOfRecord(end);
    const Place place;
    EXPECT_EQ(place.Extract(bytes), "");
    EXPECT_EQ(place.Extracted(), (Tree{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(place.Extract("a program that unpacks itself" + Build({BuiltMember("c", "3")})), "");
    EXPECT_EQ(place.Extracted()["c"], "3");
}

// No data beyond the member's stated size is passed, although more data follows in the archive.
TEST(Unzipper, NoMoreThanTheSizeIsPassed)
{
    const TempFolder folder;
    BuiltMember member("m", std::string(100'000, 'x'));
    member.central.uncompressedSize = 10;
    Unzipper unzipper(folder.Make(L"x.zip", Build({member, BuiltMember("rest", std::string(5'000'000, 'y'), 0)})));
    std::size_t passed = 0;
    ASSERT_TRUE(unzipper.First());
    EXPECT_THROW(unzipper.CopyData([&](const unsigned char*, std::size_t count) { return (passed += count) > 0; }),
        clsZIPException);
    EXPECT_LE(passed, 10u);
}

TEST(Unzipper, NamesThatAreTaken)
{
    const std::pair<const char*, const char*> cases[] = {{"./a", "a"}, {"a//b", "a/b"}, {"a\\b", "a/b"},
        {"a/./b", "a/b"}, {"..a", "..a"}, {"a..b/c", "a..b/c"}, {".hidden", ".hidden"}, {"con_.txt", "con_.txt"},
        {"\xC3", "\xE2\x94\x9C"}};
    for (const auto& [name, path] : cases)
    {
        const Place place;
        EXPECT_EQ(place.Extract(Build({BuiltMember("./", "", 0), BuiltMember(name, "x")})), "");
        EXPECT_EQ(place.Extracted()[path], "x") << name;
        place.ExpectNothingOutside();
    }
}

TEST(Unzipper, CharactersOfNames)
{
    // The field contains the checksum of the name it replaces.
    const std::string pathField("\x75\x70\x08\0\x01\x43\xBE\xB7\xE8\xD0\x96!", 12);
    const std::tuple<std::string, std::uint16_t, unsigned, std::string, const wchar_t*> cases[] = {
        {"\x84\xE1", 0, 0, "", L"\u00E4\u00DF"}, {"\xC3\xA4", 0, 0, "", L"\u251C\u00F1"},
        {"\xC3\xA4", 0, 3, "", L"\u00E4"}, {"\xC3\xA4", 0, 19, "", L"\u00E4"}, {"\x84\xE1", 0, 3, "", L"\u00E4\u00DF"},
        {"\xF0\x9F\x98\x80", 0x800, 0, "", L"\U0001F600"}, {"a", 0, 0, pathField, L"\u0416!"},
        {"a", 0x800, 0, pathField, L"a"}, {"b", 0, 0, pathField, L"b"},    // the name was changed later
        {"a", 0, 0, std::string("\1\2\2\0xx", 6) + pathField, L"\u0416!"}, // after another field
        {"a", 0, 0, pathField.substr(0, 11), L"a"}, {"a", 0, 0, std::string("\1\2\xFF\xFF", 4) + pathField, L"a"}};
    for (const auto& [name, flags, system, extra, expected] : cases)
        EXPECT_STREQ(MemberName(name, flags, static_cast<std::uint16_t>(system << 8), extra), expected)
            << testing::PrintToString(name);
}

TEST(Unzipper, MembersThatAreRefused)
{
    const BuiltMember whole("m", "the content of the member");
    const std::pair<BuiltMember, const char*> cases[] = {{whole.Changed([](BuiltMember& m) { m.central.crc ^= 1; }),
                                                             "The zip entry 'm' is damaged: its checksum doesn't fit"},
        {whole.Changed([](BuiltMember& m) { m.central.uncompressedSize += 1; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.central.uncompressedSize -= 1; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.data[3] ^= 0x55; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.central.compressedSize -= 3; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.central.compressedSize += 1000; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.Mode(0100444).central.crc ^= 1; }), "The zip entry 'm' is damaged"},
        {whole.Changed([](BuiltMember& m) { m.central.flags |= 1; }), "The zip entry 'm' is encrypted"},
        {BuiltMember("m", "/target", 0).Mode(0120777), "The zip entry 'm' is a link, which may lead out of the folder"},
        {BuiltMember("m", "x", 1), "The zip entry 'm' is packed by method 1, which can't be unpacked"},
        {BuiltMember("m", "x", 0xFFFF), "The zip entry 'm' is packed by method 65535, which can't be unpacked"}};
    for (const auto& [member, expected] : cases)
    {
        const Place place;
        const std::string text = place.Extract(Build({BuiltMember("before", "1"), member, BuiltMember("behind", "2")}));
        EXPECT_EQ(text.rfind(expected, 0), 0u) << text;
        EXPECT_EQ(place.Extracted(), (Tree{{"before", "1"}, {"behind", "2"}}));
    }
}

TEST(Unzipper, WhatIsThereIsReplacedOrInTheWay)
{
    const Place place;
    for (const char* content : {"old and longer", "new"})
        EXPECT_EQ(place.Extract(Build({BuiltMember("a/b", content)})), "");
    EXPECT_EQ(
        place.Extract(Build({BuiltMember("a", "x")})).rfind("The file of the zip entry 'a' can't be made: ", 0), 0u);
    EXPECT_EQ(place.Extract(Build({BuiltMember("a/b/c", "x")})), "The folder of the zip entry 'a/b/c' can't be made");
    EXPECT_EQ(place.Extracted(), (Tree{{"a/", ""}, {"a/b", "new"}}));
}

TEST(Unzipper, LinksInTheFolder)
{
    const Place place;
    const fs::path inner = NativePath(place.Folder());
    fs::create_directories(inner);
    std::error_code error;
    fs::create_directory_symlink("..", inner / "up", error);
    fs::create_symlink("../witness", inner / "file", error);
    fs::create_symlink("../made", inner / "dangling", error);
    if (error)
        GTEST_SKIP() << "no links here";
    for (const std::string name : {"up/witness", "up/sub/x", "file", "dangling", "up/"})
    {
        EXPECT_EQ(place.Extract(Build({BuiltMember(name, name.back() == '/' ? "" : "evil", 0)})),
            "The zip entry '" + name + "' leads through a link");
        place.ExpectNothingOutside();
    }
}

TEST(Unzipper, Times)
{
    const Place place;
    const std::string unixTime("UT\5\0\1\xF1\xC5\x93\x66", 9); // 2024-07-14 12:34:57 UTC
    EXPECT_EQ(place.Extract(Build({BuiltMember("local", "x"), BuiltMember("exact", "x").Extra(unixTime)})), "");
    for (const wchar_t* name : {L"/exact", L"/local"})
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        SYSTEMTIME universal{}, local{};
        EXPECT_TRUE(GetFileAttributesExW(place.Folder() + name, GetFileExInfoStandard, &data));
        FileTimeToSystemTime(&data.ftLastWriteTime, &universal);
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local));
        const SYSTEMTIME& time = name[1] == L'e' ? universal : local;
        EXPECT_EQ(std::tuple(time.wDay, time.wHour, time.wMinute, time.wSecond),
            std::tuple(14, 12, 34, name[1] == L'e' ? 57 : 56));
    }
}

TEST(Unzipper, TruncatedArchives)
{
    const std::string whole = Build(
        {BuiltMember("a/b", "some content, some more content").Streamed(), BuiltMember("c", "stored", 0)}, "comment");
    const Tree tree = {{"a/", ""}, {"a/b", "some content, some more content"}, {"c", "stored"}};
    int refused = 0;
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        const Place place;
        if (place.Extract(whole.substr(0, size)) != "")
            ++refused;
        else
            EXPECT_EQ(place.Extracted(), tree) << size;
    }
    EXPECT_GT(refused, 150);
}
