#include <qxut23/archives.h>
#include <qxut23/bstr.h>
#include <qxut23/errors.h>
#include <qxut23/zip.h>

#include "support/temp_folder.h"
#include "support/zip_archive.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <exception>

using namespace qxtest;

TEST(ZIPExports, WrittenArchive)
{
    const TempFolder folder;
    const qx::String source = folder.Make(L"a.txt", "content");
    folder.Make(L"b.log", "");
    const qx::String path = folder.Path(L"x.archive");
    const HZIPFILE zip = UtilZIPCreate(path, L"of the archive");
    ASSERT_NE(zip, nullptr);
    EXPECT_EQ(UtilZIPAppend(zip, source, L"of the entry", L"sub\\name"), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppend(zip, nullptr, nullptr, nullptr), QXUT_ZIP_CANNOT_OPEN);
    EXPECT_EQ(UtilZIPAppend(zip, path, nullptr, nullptr), QXUT_ZIP_CANNOT_OPEN) << "it is open without sharing";
    EXPECT_EQ(UtilZIPAppendList(zip, folder.Path(), L"*.txt", 0), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(zip, folder.Path(L"none"), nullptr, QXUT_ZIP_SUBFOLDERS), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPClose(zip), QXUT_ZIP_OK);
    EXPECT_TRUE(BytesOf(path).ends_with("of the archive"));
    const std::vector<ZIPEntry> entries = EntriesOf(BytesOf(path));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name + ' ' + entries[0].comment, "sub/name of the entry");
    EXPECT_EQ(entries[1].name + ' ' + entries[1].content, "a.txt content");

    EXPECT_EQ(UtilZIPAppend(nullptr, L"a", L"", L""), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(nullptr, L"a", L"", 1), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPClose(nullptr), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPCreate(nullptr, nullptr), nullptr);
}

// The exception is thrown in the library and caught here, across the module boundary.
TEST(ZIPExports, ExtractionLetsExceptionsThrough)
{
    const TempFolder folder;
    const qx::String path = folder.Path(L"x.zip"), source = folder.Make(L"a.txt", "content");
    const HZIPFILE zip = UtilZIPCreate(path, nullptr);
    UtilZIPAppend(zip, source, nullptr, L"good");
    UtilZIPAppend(zip, source, nullptr, L"../\u00E4");
    UtilZIPClose(zip);
    try
    {
        UtilExtractZip(path, folder.Path(L"out"));
        ADD_FAILURE();
    }
    catch (const std::exception& exception)
    {
        EXPECT_STREQ(exception.what(), "The zip entry '../\xC3\xA4' leads out of the folder");
    }
    EXPECT_EQ(BytesOf(folder.Path(L"out/good")), "content");
    DeleteFileW(folder.Path(L"out/good"));
    RemoveDirectoryW(folder.Path(L"out"));
    EXPECT_THROW(UtilExtractZip(nullptr, nullptr), std::exception);
    UtilZIPClose(UtilZIPCreate(path, nullptr));
    EXPECT_EQ(UtilExtractZip(path, folder.Path(L"out")), 1);
}

namespace
{

std::string ErrorText()
{
    QXWCHAR* text = nullptr;
    EXPECT_EQ(QxGetErrorText(&text), 1);
    const qx::String result(text);
    SysFreeString(text);
    return result.NarrowText();
}

struct Calls
{
    std::vector<std::string> problems;
    int allowed = 1000; // number of progress calls before the extraction is stopped
};

void OnProblem(void* context, const QXWCHAR* name, const QXWCHAR*)
{
    static_cast<Calls*>(context)->problems.push_back(qx::String(name).NarrowText());
}

std::int32_t OnProgress(void* context, const QXWCHAR*, std::uint64_t)
{
    return static_cast<Calls*>(context)->allowed-- > 0;
}

} // namespace

TEST(ArchiveExports, CodesAndTextsInsteadOfExceptions)
{
    const TempFolder folder;
    const qx::String path = folder.Path(L"x.zip"), source = folder.Make(L"a.txt", "content"), out = folder.Path(L"out");
    HZIPFILE zip = UtilZIPCreate(path, nullptr);
    for (const auto& [name, flags] :
        {std::pair(L"first", QXUT_ZIP_MODES | QXUT_ZIP_LINKS), {L"../a", 0}, {L"/b", 0}, {L"last", 0}})
        EXPECT_EQ(QxZIPAppend(zip, source, nullptr, name, flags), QXUT_ZIP_OK);
    EXPECT_EQ(QxZIPAppend(zip, folder.Path(L"none"), nullptr, L"x", 0), QXUT_ZIP_CANNOT_OPEN);
    EXPECT_NE(ErrorText().find("none: "), std::string::npos);
    EXPECT_EQ(QxZIPAppendList(zip, folder.Path(), L"*.txt", 0), QXUT_ZIP_OK);
    EXPECT_EQ(QxZIPAppendList(zip, folder.Path(), L"*.none", 0), QXUT_ZIP_OK);
    EXPECT_EQ(QxZIPAppendList(zip, folder.Path(), L"*", 0), QXUT_ZIP_CANNOT_OPEN) << "the archive itself is in use";
    EXPECT_NE(ErrorText().find("x.zip: "), std::string::npos);
    EXPECT_EQ(QxZIPAppendList(zip, folder.Path(L"none"), nullptr, 0), QXUT_ZIP_CANNOT_OPEN);
    EXPECT_EQ(UtilZIPClose(zip), QXUT_ZIP_OK);

    Calls calls;
    EXPECT_EQ(QxExtractZip(path, out, 0, OnProblem, OnProgress, &calls), QXUT_EXTRACT_INCOMPLETE);
    EXPECT_EQ(calls.problems, (std::vector<std::string>{"../a", "/b"}));
    EXPECT_EQ(ErrorText(), "The zip entry '../a' leads out of the folder");
    EXPECT_EQ(BytesOf(out + L"/last"), "content");
    calls.allowed = 1;
    DeleteFileW(out + L"/first");
    EXPECT_EQ(QxExtractZip(path, out, 0, nullptr, OnProgress, &calls), QXUT_EXTRACT_STOPPED);
    EXPECT_FALSE(Exists(out + L"/first")) << "it was begun, and is removed";
    EXPECT_EQ(QxExtractZip(folder.Path(L"none"), out, 0, nullptr, nullptr, nullptr), QXUT_EXTRACT_CANNOT_OPEN);
    EXPECT_EQ(QxExtractZip(source, out, 0, nullptr, nullptr, nullptr), QXUT_EXTRACT_NOT_ARCHIVE);
    EXPECT_EQ(QxExtractZip(path, source, 0, nullptr, nullptr, nullptr), QXUT_EXTRACT_CANNOT_WRITE);
    for (const wchar_t* name : {L"/first", L"/last", L"/a.txt"})
        DeleteFileW(out + name);
    RemoveDirectoryW(out);
}
