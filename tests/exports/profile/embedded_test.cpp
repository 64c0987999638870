// Files and streams inside profiles.
#include "exports/profile/support.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <algorithm>
#include <utility>

using namespace profiletest;
using namespace std::string_literals;

namespace
{

HANDLE OpenFile(const std::string& path, DWORD access, DWORD disposition = OPEN_EXISTING)
{
    return CreateFileW(Wide(path), access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

class Stream
{
public:
    explicit Stream(std::string_view bytes = {})
    {
        EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &_stream), S_OK);
        _stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        Seek(0);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { EXPECT_EQ(_stream->Release(), 0u) << "nobody keeps a reference"; }

    operator IStream*() const { return _stream; }
    void Seek(int64_t position) const
    {
        LARGE_INTEGER distance = {};
        distance.QuadPart = position;
        _stream->Seek(distance, STREAM_SEEK_SET, nullptr);
    }
    // From the present position on.
    std::string Rest() const
    {
        std::string bytes(1000, '\0');
        ULONG read = 0;
        _stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
        return bytes.substr(0, read);
    }

private:
    IStream* _stream = nullptr;
};

// The files of a folder with what is in them, in the order of their names.
std::string Content(const std::string& folder)
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        if (entry.is_regular_file())
            files.push_back(entry.path().filename().string() + "=" + BytesOf(entry.path().string()) + ";");
    }
    std::sort(files.begin(), files.end());
    std::string all;
    for (const std::string& file : files)
        all += file;
    return all;
}

HPROFLIST AppendEntry(HPROFJOB job, const wchar_t* name, const wchar_t* contents)
{
    const HPROFLIST entry = ProfAppendListW(job, nullptr, L"File.Entry");
    if (name != nullptr)
        ProfAppendStringW(job, entry, L"Name", name);
    if (contents != nullptr)
        ProfAppendStringW(job, entry, L"Contents", contents);
    return entry;
}

} // namespace

TEST(ProfileEmbedded, FileAndStreamFromTheirPositionOn)
{
    const TempFolder folder;
    const std::string path = folder.Make("file", "0123456789");
    const Job job;
    const Stream stream("0123456789");
    for (const int64_t position : {0, 4, 10, 11})
    {
        const HANDLE handle = OpenFile(path, GENERIC_READ);
        SetFilePointer(handle, static_cast<LONG>(position), nullptr, FILE_BEGIN);
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
            EXPECT_EQ(BytesOf(target), std::string("0123456789").substr(static_cast<size_t>(position)));
            const Stream streamTarget("what was there");
            EXPECT_EQ(ProfGetStreamW(job, nullptr, L"list/stream", L"key", streamTarget), PROF_OK);
            EXPECT_EQ(streamTarget.Rest(), BytesOf(target));
            EXPECT_EQ(ProfGetStreamW(job, nullptr, L"list/stream", L"wrong", streamTarget), PROF_OK);
            EXPECT_NE(streamTarget.Rest(), BytesOf(target)) << "a wrong key gives other bytes";
        }
        ProfDeleteListW(job, nullptr, L"list");
    }
}

TEST(ProfileEmbedded, ResultsOfWhatCannotBe)
{
    const TempFolder folder;
    const std::string path = folder.Make("file", "content");
    const Job job;
    // What can't be read is the empty value.
    ProfAppendFileW(job, nullptr, L"v", L"", OpenFile(path, GENERIC_WRITE));
    ProfAppendFileW(job, nullptr, L"v", nullptr, nullptr);
    ProfAppendFileW(job, nullptr, nullptr, nullptr, INVALID_HANDLE_VALUE);
    ProfAppendStreamW(job, nullptr, L"v", L"", nullptr);
    EXPECT_EQ(Tree(job), "v=;v=;=;v=;");

    // Each takes its handle over: the file could not be opened again otherwise.
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
    EXPECT_EQ(ProfGetStreamW(job, nullptr, L"none", L"", nullptr), PROF_ERR_NO_LEAF);
    EXPECT_EQ(ProfGetStreamA(nullptr, nullptr, "v", "", nullptr), PROF_OK);
    ProfAppendStreamW(nullptr, nullptr, L"v", L"", nullptr);
    EXPECT_EQ(ProfAppendFilesW(nullptr, nullptr, L"*", L""), 0);
    EXPECT_EQ(ProfExtractFilesW(nullptr, nullptr, L"folder", L""), 0);
}

TEST(ProfileEmbedded, FilesOfAFolder)
{
    const TempFolder folder;
    folder.Make("a.txt", "first");
    folder.Make("b.txt", std::string("\0\xFF", 2));
    folder.Make("empty.txt", "");
    folder.Make("c.dat", "other");
    std::filesystem::create_directory(folder.Path("d.txt"));
    const Job job;
    EXPECT_EQ(ProfAppendFilesA(job, nullptr, folder.Path("*.txt").c_str(), "key"), 3) << "the empty one counts";
    EXPECT_EQ(ProfAppendFilesW(job, ProfAppendListW(job, nullptr, L"more"), Wide(folder.Path("c.dat")), L""), 1);
    EXPECT_EQ(ProfAppendFilesW(job, nullptr, Wide(folder.Path("*.none")), L""), 0);
    EXPECT_EQ(ProfAppendFilesW(job, nullptr, nullptr, L""), 0);
    ProfAppendStringW(job, nullptr, L"File.Entry", L"a leaf is passed over");

    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(folder.Path("out")), L"key"), 2);
    EXPECT_EQ(Content(folder.Path("out")), "a.txt=first;b.txt="s + std::string("\0\xFF", 2) + ";");
    const std::string more = folder.Path("out") + static_cast<char>(std::filesystem::path::preferred_separator);
    EXPECT_EQ(ProfExtractFilesA(job, ProfGetListW(job, nullptr, L"more"), more.c_str(), ""), 1);
    EXPECT_EQ(BytesOf(folder.Path("out/c.dat")), "other");
}

TEST(ProfileEmbedded, EntriesThatAreNotExtracted)
{
    const TempFolder folder;
    const std::string out = folder.Path("out");
    const Job job;
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), 0);
    EXPECT_FALSE(std::filesystem::exists(out)) << "not made for nothing";

    folder.Make("victim", "safe");
    std::filesystem::create_directories(folder.Path("out/sub"));
    const std::string absolute = folder.Path("victim");
    for (const char* name : {"..", ".", "../victim", "..\\victim", "sub/file", "sub\\file", "/file", "\\file", "C:file",
             "c:\\file", "file:stream", "nul", "COM1.txt", "file.", "file ", "a*b"})
        AppendEntry(job, Wide(name), L"QUJD");
    AppendEntry(job, Wide(absolute), L"QUJD");
    AppendEntry(job, nullptr, L"QUJD");
    AppendEntry(job, L"", L"QUJD");
    AppendEntry(job, L"no contents", nullptr);
    AppendEntry(job, L"empty contents", L"");
    AppendEntry(job, L"sub", L"QUJD"); // a folder
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), 0);
    EXPECT_EQ(BytesOf(folder.Path("victim")), "safe");
    EXPECT_EQ(Content(out), "");
    EXPECT_EQ(Content(folder.Path("out/sub")), "");

    std::error_code noLinks;
    std::filesystem::create_symlink(absolute, folder.Path("out/link"), noLinks);
    AppendEntry(job, L"link", L"QUJD");
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, Wide(out), L""), noLinks ? 1 : 0);
    EXPECT_EQ(BytesOf(folder.Path("victim")), "safe");

    // The later one of a name stays, and both count.
    const Job twice;
    AppendEntry(twice, L"file", L"QUJD");
    AppendEntry(twice, L"file", L"REVG");
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, Wide(folder.Path("new")), L""), 2);
    EXPECT_EQ(Content(folder.Path("new")), "file=DEF;");
    // No folder.
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, Wide(folder.Path("none/new")), L""), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, Wide(absolute), L""), PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(ProfExtractFilesW(twice, nullptr, nullptr, L""), PROF_ERR_WRITE_FAILED);
}
