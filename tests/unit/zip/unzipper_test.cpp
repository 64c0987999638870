// Extraction: what comes out of archives of many makers, and that nothing gets out of the folder.
#include "zip/unzipper.h"

#include "support/temp_folder.h"
#include "support/zip_builder.h"
#include "zip/exception.h"
#include "zip/member_name.h"
#include "zip/zip_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>

using namespace qx;
using namespace qxtest;
namespace fs = std::filesystem;

namespace
{

fs::path NativePath(const String& path)
{
    String utf8 = path;
    utf8.SetCodePage(65001);
    return fs::u8path(utf8.NarrowText());
}

std::string Utf8(const fs::path& path)
{
    const auto text = path.generic_u8string();
    return {text.begin(), text.end()};
}

// Relative paths in UTF-8, with a slash behind a folder, and the files' contents.
using Tree = std::map<std::string, std::string>;

Tree TreeOf(const fs::path& root)
{
    Tree tree;
    if (fs::exists(root))
        for (const auto& entry : fs::recursive_directory_iterator(root))
        {
            std::string name = Utf8(entry.path().lexically_relative(root));
            if (entry.is_directory())
                tree[name + '/'];
            else
            {
                String path;
                path.SetCodePage(65001);
                path.Assign(Utf8(entry.path()).c_str());
                tree[name] = BytesOf(path);
            }
        }
    return tree;
}

// A folder for extraction inside another one, which has a witness beside it.
class Place
{
public:
    Place() { _outer.Make(L"witness", "untouched"); }
    ~Place()
    {
        std::error_code ignored;
        fs::remove_all(NativePath(Folder()), ignored);
    }

    String Folder() const { return _outer.Path(L"inner"); }
    String Archive(std::string_view bytes) const { return _outer.Make(L"x.zip", bytes); }
    Tree Extracted() const { return TreeOf(NativePath(Folder())); }

    // The exception's text; empty if there was none.
    std::string Extract(const String& archive) const
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

String DataFile(const std::string& name)
{
    String path;
    path.SetCodePage(65001);
    path.Assign((std::string(QXUT_TEST_DATA "/zip/") + name).c_str());
    return path;
}

std::string PlainText()
{
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "line " + std::to_string(i) + " of a text that packs well\n";
    return text;
}

const Tree& WholeTree()
{
    static const Tree tree = {{"plain.txt", PlainText()}, {"none", ""}, {"empty/", ""}, {"sub/", ""},
        {"sub/Gr\xC3\xB6\xC3\x9F"
         "e.txt",
            "Gr\xC3\xB6\xC3\x9F"
            "e und Ma\xC3\x9F\n"},
        {"sub/\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E/", ""},
        {"sub/\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E/\xC3\xBC.txt", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\n"}};
    return tree;
}

} // namespace

TEST(Unzipper, ArchivesOfOtherPrograms)
{
    const Tree plain = {{"plain.txt", PlainText()}};
    const struct
    {
        const char* archive;
        Tree tree;
        const char* exception = "";
    } cases[] = {
        {"infozip.zip", WholeTree()},
        {"infozip-stored.zip", WholeTree()},
        {"infozip-streamed.zip", WholeTree()},
        {"infozip-streamed-zip64.zip", {{"-", PlainText()}}},
        {"infozip-zip64.zip", WholeTree()},
        {"7zip.zip", WholeTree()},
        {"7zip-local.zip", WholeTree()},
        {"libarchive.zip", WholeTree()},
        {"libarchive-streamed.zip", WholeTree()},
        {"python.zip", WholeTree()},
        {"python-streamed.zip", WholeTree()},
        {"python-zip64.zip", plain},
        {"infozip-encrypted.zip", {}, "The zip entry 'plain.txt' is encrypted"},
        {"7zip-aes.zip", {}, "The zip entry 'plain.txt' is encrypted"},
        {"infozip-bzip2.zip", {}, "The zip entry 'plain.txt' is packed by method 12, which can't be unpacked"},
        {"7zip-bzip2.zip", {}, "The zip entry 'plain.txt' is packed by method 12, which can't be unpacked"},
        {"7zip-deflate64.zip", {}, "The zip entry 'plain.txt' is packed by method 9, which can't be unpacked"},
        {"7zip-lzma.zip", {}, "The zip entry 'plain.txt' is packed by method 14, which can't be unpacked"},
        {"infozip-link.zip", plain, "The zip entry 'link' is a link, which may lead out of the folder"},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.archive);
        const Place place;
        EXPECT_EQ(place.Extract(DataFile(test.archive)), test.exception);
        EXPECT_EQ(place.Extracted(), test.tree);
    }
}

TEST(Unzipper, DocumentsOfOfficePrograms)
{
    for (const auto& [document, members] : {std::pair("letter.odt", std::vector<const char*>{"mimetype", "meta.xml",
                                                                        "content.xml", "META-INF/manifest.xml"}),
             {"letter.docx", {"[Content_Types].xml", "docProps/core.xml", "word/document.xml"}}})
    {
        const Place place;
        EXPECT_EQ(place.Extract(DataFile(document)), "");
        const Tree tree = place.Extracted();
        for (const char* member : members)
        {
            ASSERT_EQ(tree.count(member), 1u) << member;
            EXPECT_FALSE(tree.at(member).empty()) << member;
        }
    }
}

TEST(Unzipper, OwnArchives)
{
    const TempFolder folder;
    const String path = folder.Path(L"\u00E4\u00F6.zip");
    {
        clsZIPFile file(path, L"comment");
        file.AddFile(folder.Make(L"a", "first"), L"sub\\\u00E4\u0416", L"comment");
        file.AddFile(folder.Make(L"b", ""), L"\u00DF.b", L"");
        WIN32_FIND_DATAW found{};
        file.AddDirectory(L"", L"d\\\u00F1", found);
        EXPECT_EQ(file.Close(), clsZIPFile::kOk);
    }
    const Place place;
    EXPECT_EQ(place.Extract(path), "");
    EXPECT_EQ(place.Extracted(),
        (Tree{{"sub/", ""}, {"sub/\xC3\xA4\xD0\x96", "first"}, {"\xC3\x9F.b", ""}, {"d/", ""}, {"d/\xC3\xB1/", ""}}));
}

TEST(Unzipper, WithoutEntriesAndWithoutAnArchive)
{
    const Place place;
    EXPECT_EQ(place.Extract(place.Archive(Build({}))), "");
    EXPECT_EQ(place.Extract(place.Archive(Build({}, "comment"))), "");
    EXPECT_EQ(place.Extracted(), Tree());
    for (const char* bytes : {"", "P", "no archive at all, but more bytes than an end record has"})
        EXPECT_EQ(place.Extract(place.Archive(bytes)), "Error loading zip file!");
    EXPECT_EQ(place.Extract(place.Folder()), "Error loading zip file!");
    EXPECT_EQ(place.Extract(place.Folder() + L"/missing.zip"), "Error loading zip file!");
    EXPECT_EQ(place.Extract(L""), "Error loading zip file!");
}

TEST(Unzipper, ExactlyAsManyEntriesAsTheFieldCounts)
{
    const Place place;
    std::vector<BuiltMember> members(65534, BuiltMember("d/", "", 0));
    members.emplace_back("last", "here");
    EXPECT_EQ(place.Extract(place.Archive(Build(members))), "");
    EXPECT_EQ(place.Extracted(), (Tree{{"d/", ""}, {"last", "here"}}));
}

TEST(Unzipper, NamesThatAreRefused)
{
    const struct
    {
        std::string name;
        const char* problem;
    } cases[] = {
        {"/absolute", "leads out of the folder"},
        {"\\absolute", "leads out of the folder"},
        {"//server/share", "leads out of the folder"},
        {"..", "leads out of the folder"},
        {"../witness", "leads out of the folder"},
        {"..\\witness", "leads out of the folder"},
        {"a/../../witness", "leads out of the folder"},
        {"a\\..\\..\\witness", "leads out of the folder"},
        {"a/../b", "leads out of the folder"},
        {"../inner/x", "leads out of the folder"},
        {"../", "leads out of the folder"},
        {"c:\\witness", "leads out of the folder"},
        {"C:witness", "leads out of the folder"},
        {"z:/", "leads out of the folder"},
        {"a/c:/b", "has a name that no file may have"},
        {"witness:stream", "has a name that no file may have"},
        {".. /witness", "has a name that no file may have"},
        {".../witness", "has a name that no file may have"},
        {". ./witness", "has a name that no file may have"},
        {"a./b", "has a name that no file may have"},
        {"nul", "has a name that no file may have"},
        {"a/Con.txt", "has a name that no file may have"},
        {"a?b", "has a name that no file may have"},
        {std::string("a\0b", 3), "has a name that no file may have"},
        {"tab\there", "has a name that no file may have"},
        {std::string(300, 'n'), "has a name that no file may have"},
        {"", "has no name"},
        {".", "has no name"},
    };
    for (const auto& test : cases)
        for (const bool isUtf8 : {false, true})
        {
            SCOPED_TRACE(test.name);
            const Place place;
            const String archive = place.Archive(
                Build({BuiltMember("first", "1"), BuiltMember(test.name, "evil").Flags(isUtf8 ? 0x800 : 0)}));
            const std::string text = place.Extract(archive);
            EXPECT_NE(text.find(test.problem), std::string::npos) << text;
            EXPECT_EQ(place.Extracted(), (Tree{{"first", "1"}})) << "what came before stays";
            place.ExpectNothingOutside();
        }
}

TEST(Unzipper, NamesThatAreTaken)
{
    const struct
    {
        std::string name;
        const char* path;
    } cases[] = {
        {"./a", "a"},
        {"a//b", "a/b"},
        {"a\\b", "a/b"},
        {"a/./b", "a/b"},
        {"..a", "..a"},
        {"a..b/c", "a..b/c"},
        {".hidden", ".hidden"},
        {"con_.txt", "con_.txt"},
        {"a b", "a b"},
        {"\xC3", "\xE2\x94\x9C"},
    };
    for (const auto& test : cases)
    {
        const Place place;
        EXPECT_EQ(place.Extract(place.Archive(Build({BuiltMember("./", "", 0), BuiltMember(test.name, "x")}))), "");
        EXPECT_EQ(place.Extracted().count(test.path), 1u) << test.name;
        place.ExpectNothingOutside();
    }
}

TEST(Unzipper, CharactersOfNames)
{
    // The field holds the checksum of the name that it stands for.
    const std::string pathField("\x75\x70\x08\0\x01\x43\xBE\xB7\xE8\xD0\x96!", 12);
    const struct
    {
        std::string name;
        unsigned flags;
        unsigned system;
        std::string extra;
        const wchar_t* expected;
    } cases[] = {
        {"\x84\xE1", 0, 0, "", L"\u00E4\u00DF"},
        {"\xC3\xA4", 0, 0, "", L"\u251C\u00F1"},
        {"\xC3\xA4", 0, 3, "", L"\u00E4"},
        {"\xC3\xA4", 0, 19, "", L"\u00E4"},
        {"\xC3\xA4", 0x800, 0, "", L"\u00E4"},
        {"\x84\xE1", 0, 3, "", L"\u00E4\u00DF"},
        {"\xF0\x9F\x98\x80", 0x800, 0, "", L"\U0001F600"},
        {"a", 0, 0, pathField, L"\u0416!"},
        {"a", 0x800, 0, pathField, L"a"},
        {"b", 0, 0, pathField, L"b"},                                      // the name was changed since
        {"a", 0, 0, std::string("\1\2\2\0xx", 6) + pathField, L"\u0416!"}, // behind another field
        {"a", 0, 0, pathField.substr(0, 11), L"a"},
        {"a", 0, 0, std::string("\1\2\xFF\xFF", 4) + pathField, L"a"},
    };
    for (const auto& test : cases)
        EXPECT_STREQ(MemberName(test.name, static_cast<std::uint16_t>(test.flags),
                         static_cast<std::uint16_t>(test.system << 8), test.extra),
            test.expected)
            << testing::PrintToString(test.name);
}

TEST(Unzipper, MembersThatAreRefused)
{
    const auto damaged = [](void (*change)(BuiltMember&))
    {
        BuiltMember member("m", "the content of the member");
        change(member);
        return member;
    };
    const struct
    {
        BuiltMember member;
        const char* text;
    } cases[] = {
        {damaged([](BuiltMember& m) { m.central.crc ^= 1; }), "The zip entry 'm' is damaged: its checksum doesn't fit"},
        {damaged([](BuiltMember& m) { m.central.uncompressedSize += 1; }), "The zip entry 'm' is damaged"},
        {damaged([](BuiltMember& m) { m.central.uncompressedSize -= 1; }),
            "The zip entry 'm' is damaged: its checksum doesn't fit"},
        {damaged([](BuiltMember& m) { m.data[3] ^= 0x55; }), "The zip entry 'm' is damaged"},
        {damaged([](BuiltMember& m) { m.central.compressedSize -= 3; }), "The zip entry 'm' is damaged"},
        {damaged([](BuiltMember& m) { m.central.compressedSize += 1000; }), "The zip entry 'm' is damaged"},
        {damaged([](BuiltMember& m) { m.central.flags |= 1; }), "The zip entry 'm' is encrypted"},
        {damaged([](BuiltMember& m) { m.Mode(0120777); }),
            "The zip entry 'm' is a link, which may lead out of the folder"},
        {BuiltMember("m", "x", 1), "The zip entry 'm' is packed by method 1, which can't be unpacked"},
        {BuiltMember("m", "x", 0xFFFF), "The zip entry 'm' is packed by method 65535, which can't be unpacked"},
    };
    for (const auto& test : cases)
    {
        const Place place;
        const std::string text =
            place.Extract(place.Archive(Build({BuiltMember("before", "1"), test.member, BuiltMember("behind", "2")})));
        EXPECT_EQ(text.rfind(test.text, 0), 0u) << text;
        EXPECT_EQ(place.Extracted(), (Tree{{"before", "1"}}));
    }
}

TEST(Unzipper, WhatIsThereIsReplacedOrInTheWay)
{
    const Place place;
    const String archive = place.Archive(Build({BuiltMember("a/b", "new")}));
    EXPECT_EQ(place.Extract(place.Archive(Build({BuiltMember("a/b", "old and longer")}))), "");
    place.Archive(Build({BuiltMember("a/b", "new")}));
    EXPECT_EQ(place.Extract(archive), "");
    EXPECT_EQ(place.Extracted(), (Tree{{"a/", ""}, {"a/b", "new"}}));

    place.Archive(Build({BuiltMember("a", "x")}));
    EXPECT_EQ(place.Extract(archive).rfind("The file of the zip entry 'a' can't be made: ", 0), 0u);
    place.Archive(Build({BuiltMember("a/b/c", "x")}));
    EXPECT_EQ(place.Extract(archive), "The folder of the zip entry 'a/b/c' can't be made");
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
        EXPECT_EQ(place.Extract(place.Archive(Build({BuiltMember(name, name.back() == '/' ? "" : "evil", 0)}))),
            "The zip entry '" + name + "' leads through a link");
        place.ExpectNothingOutside();
    }
}

TEST(Unzipper, Times)
{
    const Place place;
    const std::string unixTime("UT\5\0\1\xF1\xC5\x93\x66", 9); // 2024-07-14 12:34:57 UTC
    EXPECT_EQ(
        place.Extract(place.Archive(Build({BuiltMember("local", "x"), BuiltMember("exact", "x").Extra(unixTime)}))),
        "");
    const auto timeOf = [&](const wchar_t* name)
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        SYSTEMTIME time{};
        EXPECT_TRUE(GetFileAttributesExW(place.Folder() + L"/" + name, GetFileExInfoStandard, &data));
        FileTimeToSystemTime(&data.ftLastWriteTime, &time);
        return time;
    };
    const SYSTEMTIME exact = timeOf(L"exact");
    EXPECT_EQ(std::tuple(exact.wDay, exact.wHour, exact.wMinute, exact.wSecond), std::tuple(14, 12, 34, 57));
    const SYSTEMTIME universal = timeOf(L"local");
    SYSTEMTIME local;
    ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local));
    EXPECT_EQ(std::tuple(local.wDay, local.wHour, local.wMinute, local.wSecond), std::tuple(14, 12, 34, 56));
}

namespace
{

// A folder in memory, where there is one: ten thousand extractions are hard on a disk.
class TempPathInMemory
{
public:
    TempPathInMemory()
    {
        std::error_code ignored;
        const fs::path memory = fs::absolute("/dev/shm", ignored);
        if (!fs::is_directory(memory, ignored))
            return;
        for (auto& [name, before] : _variables)
        {
            GetEnvironmentVariableW(name, before, MAX_PATH);
            String path;
            path.SetCodePage(65001);
            path.Assign(Utf8(memory).c_str());
            SetEnvironmentVariableW(name, path);
        }
    }
    ~TempPathInMemory()
    {
        for (auto& [name, before] : _variables)
            SetEnvironmentVariableW(name, *before ? before : nullptr);
    }

private:
    struct Variable
    {
        const wchar_t* name;
        wchar_t before[MAX_PATH];
    };
    Variable _variables[2] = {{L"TMPDIR", {}}, {L"TMP", {}}};
};

} // namespace

TEST(Unzipper, Damage)
{
    const TempPathInMemory inMemory;
    const Place place;
    const std::string whole = Build(
        {BuiltMember("a/b", "some content, some more content").Streamed(), BuiltMember("c", "stored", 0)}, "comment");
    const auto extract = [&](const std::string& bytes)
    {
        fs::remove_all(NativePath(place.Folder()));
        return place.Extract(place.Archive(bytes)).empty();
    };
    ASSERT_TRUE(extract(whole));
    const Tree tree = place.Extracted();
    for (std::size_t size = 0; size < whole.size(); ++size)
        if (extract(whole.substr(0, size)))
        {
            EXPECT_EQ(place.Extracted(), tree) << size;
        }
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i)
    {
        std::string bytes = whole;
        const auto bit = random() % (8 * bytes.size());
        bytes[bit / 8] ^= static_cast<char>(1 << bit % 8);
        extract(bytes);
        for (const auto& [name, content] : place.Extracted()) // whatever their names are now
            EXPECT_TRUE(name.back() == '/' || content == tree.at("a/b") || content == "stored") << bit;
    }
    place.ExpectNothingOutside();
}
