// Files and streams embedded in profiles.
#include <qxut23/profile_files.h>

#include "exports/profile/support.h"
#include "support/memory_stream.h"

#include <gtest/gtest.h>

#include <map>

using namespace profiletest;
using namespace std::string_literals;
using Stream = qxtest::MemoryStream;

namespace
{

HANDLE OpenFile(const std::string& path, DWORD access)
{
    return CreateFileW(Wide(path), access, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

using Files = std::map<std::string, std::string>;

// The contents of a folder's files by name.
Files FilesOf(const std::string& folder)
{
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file())
            files[entry.path().filename().string()] = BytesOf(entry.path().string());
    return files;
}

void AppendEntry(HPROFJOB job, const wchar_t* name, const wchar_t* contents)
{
    const HPROFLIST entry = ProfAppendListW(job, nullptr, L"File.Entry");
    ProfAppendStringW(job, entry, L"Name", name); // does nothing for null
    ProfAppendStringW(job, entry, L"Contents", contents);
}

class ProfileEmbedded : public testing::Test
{
protected:
    const TempFolder folder;
    const std::string out = folder.Path("out");
    const Job job;
};

} // namespace

TEST_F(ProfileEmbedded, FileAndStreamFromTheirPositionOn)
{
    const std::string path = folder.Make("file", "0123456789");
    const Stream stream("0123456789");
    for (const int position : {0, 4, 10, 11})
    {
        const HANDLE handle = OpenFile(path, GENERIC_READ);
        SetFilePointer(handle, position, nullptr, FILE_BEGIN);
        ProfAppendFileW(job, nullptr, L"list/file", L"key", handle);
        stream.Seek(position);
        ProfAppendStreamA(job, nullptr, "list/stream", "key", stream);
        const std::string packed = Value(job, L"list/file");
        EXPECT_EQ(packed, Value(job, L"list/stream"));
        EXPECT_EQ(packed.substr(0, 3), position < 10 ? "@2@" : "");
        if (position < 10)
        {
            const std::string target = folder.Make("target", "what was there is longer than that");
            EXPECT_EQ(ProfGetFileA(job, nullptr, "list/file", "key", OpenFile(target, GENERIC_READ | GENERIC_WRITE)),
                PROF_OK);
            EXPECT_EQ(BytesOf(target), "0123456789"s.substr(static_cast<std::size_t>(position)));
            const Stream streamTarget("what was there");
            EXPECT_EQ(ProfGetStreamW(job, nullptr, L"list/stream", L"key", streamTarget), PROF_OK);
            EXPECT_EQ(streamTarget.Rest(), BytesOf(target));
            EXPECT_EQ(ProfGetStreamW(job, nullptr, L"list/stream", L"wrong", streamTarget), PROF_OK);
            EXPECT_NE(streamTarget.Rest(), BytesOf(target)) << "a wrong key gives other bytes";
            EXPECT_EQ(streamTarget.References(), 1u);
        }
        ProfDeleteListW(job, nullptr, L"list");
    }
    EXPECT_EQ(stream.References(), 1u);
}

TEST_F(ProfileEmbedded, ResultsOfWhatCannotBe)
{
    const std::string path = folder.Make("file", "content");
    // A file that can't be read produces the empty value.
    ProfAppendFileW(job, nullptr, L"v", L"", OpenFile(path, GENERIC_WRITE));
    ProfAppendFileW(job, nullptr, L"v", nullptr, nullptr);
    ProfAppendFileW(job, nullptr, nullptr, nullptr, INVALID_HANDLE_VALUE);
    ProfAppendStreamW(job, nullptr, L"v", L"", nullptr);
    EXPECT_EQ(Tree(job), "v=;v=;=;v=;");

    // The functions take ownership of the handle; otherwise the file could not be opened again.
    const auto readWrite = [&]
    {
        const HANDLE handle = OpenFile(path, GENERIC_READ | GENERIC_WRITE);
        EXPECT_NE(handle, INVALID_HANDLE_VALUE);
        return handle;
    };
    EXPECT_EQ(ProfGetFileW(job, nullptr, L"none", L"", readWrite()), PROF_ERR_NO_LEAF);
    EXPECT_EQ(ProfGetFileW(job, nullptr, L"v", L"", readWrite()), PROF_ERR_WRITE_FAILED) << "an empty text";
    ProfAppendFileW(nullptr, nullptr, L"v", L"", readWrite());
    EXPECT_EQ(ProfGetFileW(nullptr, nullptr, L"v", L"", readWrite()), PROF_OK);
    EXPECT_EQ(BytesOf(path), "content");
    ProfSetStringW(job, nullptr, L"v", L"QUJD");
    EXPECT_EQ(ProfGetFileW(job, nullptr, L"v", nullptr, readWrite()), PROF_OK);
    EXPECT_EQ(BytesOf(path), "ABC") << "plain Base64";
    EXPECT_EQ(ProfGetFileW(job, nullptr, L"v", L"", OpenFile(path, GENERIC_READ)), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(ProfGetFileW(job, nullptr, L"v", L"", INVALID_HANDLE_VALUE), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(ProfGetStreamW(job, nullptr, L"v", L"", nullptr), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(ProfGetStreamA(nullptr, nullptr, "v", "", nullptr), PROF_OK);
    ProfAppendStreamW(nullptr, nullptr, L"v", L"", nullptr);
    EXPECT_EQ(ProfAppendFilesW(nullptr, nullptr, L"*", L""), 0);
    EXPECT_EQ(ProfExtractFilesW(nullptr, nullptr, L"folder", L""), 0);
}

TEST_F(ProfileEmbedded, StrictExtractionSaysWhatIsMissing)
{
    folder.Make("a.txt", "\0\xFF"s);
    folder.Make("empty.txt", "");
    std::filesystem::create_directory(folder.Path("d.txt"));
    EXPECT_EQ(ProfAppendFilesW(job, nullptr, nullptr, L""), 0);
    EXPECT_EQ(ProfAppendFilesA(job, nullptr, folder.Path("*.txt").c_str(), "key"), 2) << "the empty one counts";
    ProfAppendStringW(job, nullptr, L"File.Entry", L"a leaf is passed over");
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L"key"), 1);
    EXPECT_EQ(FilesOf(out), (Files{{"a.txt", "\0\xFF"s}}));
    std::map<std::string, int> problems;
    const auto extract = [&](const wchar_t* key)
    {
        problems.clear();
        return QxProfExtractFiles(
            job, nullptr, Wide(out), key,
            [](void* context, const wchar_t* name, std::int32_t reason, const wchar_t* description)
            {
                EXPECT_NE(*description, 0);
                (*static_cast<std::map<std::string, int>*>(context))[Utf8(name)] = reason;
            },
            &problems);
    };
    EXPECT_EQ(extract(L"key"), 1);
    EXPECT_TRUE(problems.empty());
    AppendEntry(job, L"plain", L"QUJD");
    AppendEntry(job, L"garbage", L"what is this?");
    AppendEntry(job, L"empty", L"");
    AppendEntry(job, L"../a", L"QUJD");
    AppendEntry(job, nullptr, L"QUJD");
    std::filesystem::create_directory(folder.Path("out/sub"));
    AppendEntry(job, L"sub", L"QUJD");
    EXPECT_EQ(extract(nullptr), 1);
    EXPECT_EQ(problems, (std::map<std::string, int>{{"a.txt", QXUT_FILE_WRONG_KEY}, {"garbage", QXUT_FILE_DAMAGED},
                            {"empty", QXUT_FILE_NO_CONTENTS}, {"../a", QXUT_FILE_NAME_REFUSED}, {"", QXUT_FILE_NO_NAME},
                            {"sub", QXUT_FILE_CANNOT_WRITE}}));
    extract(L"wrong");
    EXPECT_EQ(problems["a.txt"], QXUT_FILE_WRONG_KEY);
    EXPECT_EQ(FilesOf(out), (Files{{"a.txt", "\0\xFF"s}, {"plain", "ABC"}})) << "files remain as they were";
    EXPECT_EQ(
        QxProfExtractFiles(job, nullptr, Wide(folder.Path("a.txt")), nullptr, nullptr, nullptr), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(QxProfExtractFiles(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(ProfileEmbedded, EntriesThatAreNotExtracted)
{
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), 0);
    EXPECT_FALSE(std::filesystem::exists(out)) << "not made for nothing";

    const std::string victim = folder.Make("victim", "safe");
    std::filesystem::create_directories(folder.Path("out/sub"));
    for (const char* name : {"..", ".", "../victim", "..\\victim", "sub/file", "sub\\file", "/file", "\\file", "C:file",
             "c:\\file", "file:stream", "nul", "COM1.txt", "file.", "file ", "a*b", "", victim.c_str()})
        AppendEntry(job, Wide(name), L"QUJD");
    AppendEntry(job, nullptr, L"QUJD");
    AppendEntry(job, L"no contents", nullptr);
    AppendEntry(job, L"empty contents", L"");
    AppendEntry(job, L"sub", L"QUJD"); // a folder with this name exists
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), 0);
    EXPECT_EQ(FilesOf(out), Files());
    EXPECT_EQ(FilesOf(folder.Path("out/sub")), Files());

    std::error_code noLinks;
    std::filesystem::create_symlink(victim, folder.Path("out/link"), noLinks);
    std::filesystem::create_symlink(folder.Path("nothing yet"), folder.Path("out/dangling"), noLinks);
    AppendEntry(job, L"link", L"QUJD");
    AppendEntry(job, L"dangling", L"QUJD");
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), noLinks ? 2 : 0);
    EXPECT_EQ(BytesOf(victim), "safe");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("nothing yet")));

    // The later entry of the same name wins, and both are counted.
    const Job twice;
    AppendEntry(twice, L"file", L"QUJD");
    AppendEntry(twice, L"file", L"REVG");
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, Wide(folder.Path("new")), L""), 2);
    EXPECT_EQ(FilesOf(folder.Path("new")), (Files{{"file", "DEF"}}));
    for (const std::string& noFolder : {folder.Path("none/new"), victim})
        EXPECT_EQ(ProfExtractFilesW(twice, nullptr, Wide(noFolder), L""), PROF_ERR_WRITE_FAILED) << noFolder;
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, nullptr, L""), PROF_ERR_WRITE_FAILED);
}
