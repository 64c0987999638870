#include <qxut23/zip.h>

#include "support/temp_folder.h"
#include "support/zip_archive.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

using namespace qxtest;

TEST(ZIPExports, WrittenArchive)
{
    const TempFolder folder;
    const qx::String source = folder.Make(L"a.txt", "content");
    const qx::String other = folder.Make(L"b.log", "");
    const qx::String path = folder.Path(L"x.archive");
    const HZIPFILE zip = UtilZIPCreate(path, L"of the archive");
    ASSERT_NE(zip, nullptr);
    EXPECT_EQ(UtilZIPAppend(zip, source, L"of the entry", L"sub\\name"), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppend(zip, folder.Path(L"none"), nullptr, nullptr), QXUT_ZIP_CANNOT_OPEN);
    EXPECT_EQ(UtilZIPAppend(zip, nullptr, nullptr, nullptr), QXUT_ZIP_CANNOT_OPEN);
    EXPECT_EQ(UtilZIPAppend(zip, path, nullptr, nullptr), QXUT_ZIP_CANNOT_OPEN) << "it is open without sharing";
    EXPECT_EQ(UtilZIPAppend(zip, other, nullptr, nullptr), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(zip, folder.Path(), L"*.txt", 0), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(zip, folder.Path(L"none"), nullptr, QXUT_ZIP_SUBFOLDERS), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(zip, folder.Path(), nullptr, 0), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPClose(zip), QXUT_ZIP_OK);

    const ZIPArchive archive = TakeApart(BytesOf(path));
    EXPECT_EQ(archive.comment, "of the archive");
    ASSERT_EQ(archive.entries.size(), 5u);
    EXPECT_EQ(archive.entries[0].name, "sub/name");
    EXPECT_EQ(archive.entries[0].comment, "of the entry");
    EXPECT_EQ(archive.entries[0].content, "content");
    qx::String stored = other;
    stored.Replace(L'\\', L'/');
    EXPECT_STREQ(archive.entries[1].name.c_str(), stored.Mid(stored.CharAt(1) == L':' ? 2 : 0).NarrowText());
    EXPECT_EQ(archive.entries[2].name, "a.txt");
    EXPECT_NE(archive.Find("b.log"), nullptr);
}

TEST(ZIPExports, NullHandleAndFilesThatCannotBeMade)
{
    EXPECT_EQ(UtilZIPAppend(nullptr, L"a", L"", L""), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPAppendList(nullptr, L"a", L"", 1), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPClose(nullptr), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPCreate(nullptr, nullptr), nullptr);
    EXPECT_EQ(UtilZIPCreate(L"no such folder/x.zip", L""), nullptr);
}

// The exception is made in the library and caught here, across the border of two modules.
TEST(ZIPExports, ExtractionLetsExceptionsThrough)
{
    const TempFolder folder;
    const auto extract = [&](const qx::String& archive)
    {
        try
        {
            return std::to_string(UtilExtractZip(archive, folder.Path(L"out")));
        }
        catch (const std::exception& exception)
        {
            return std::string(exception.what());
        }
    };
    EXPECT_EQ(extract(folder.Path(L"missing")), "Error loading zip file!");
    EXPECT_EQ(extract(L""), "Error loading zip file!");
    EXPECT_THROW(UtilExtractZip(nullptr, nullptr), std::exception);

    const qx::String path = folder.Path(L"x.zip");
    const qx::String source = folder.Make(L"a.txt", "content");
    HZIPFILE zip = UtilZIPCreate(path, nullptr);
    UtilZIPAppend(zip, source, nullptr, L"sub\\a");
    UtilZIPClose(zip);
    EXPECT_EQ(extract(path), "1");
    EXPECT_EQ(BytesOf(folder.Path(L"out/sub/a")), "content");

    zip = UtilZIPCreate(path, nullptr);
    UtilZIPAppend(zip, source, nullptr, L"good");
    UtilZIPAppend(zip, source, nullptr, L"../\u00E4");
    UtilZIPClose(zip);
    EXPECT_EQ(extract(path), "The zip entry '../\xC3\xA4' leads out of the folder");
    EXPECT_EQ(BytesOf(folder.Path(L"out/good")), "content");
    for (const wchar_t* name : {L"out/good", L"out/sub/a"})
        DeleteFileW(folder.Path(name));
    RemoveDirectoryW(folder.Path(L"out/sub"));
    RemoveDirectoryW(folder.Path(L"out"));
}
