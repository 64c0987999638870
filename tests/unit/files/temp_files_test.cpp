#include "files/temp_files.h"

#include "core/regex.h"
#include "files/path_separator.h"
#include "files/paths.h"
#include "unit/files/own_temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

class TempFiles : public ::testing::Test
{
protected:
    TempFiles() { TempFolderOfTests(); }
};

std::uint64_t nextNumber;
std::uint64_t CountedNumber()
{
    return nextNumber++;
}

// A file with some bytes that was last written to some days ago.
void MakeOldFile(const String& path, int days)
{
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, "old", 3, &written, nullptr);
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER time;
    time.LowPart = now.dwLowDateTime;
    time.HighPart = now.dwHighDateTime;
    time.QuadPart -= static_cast<ULONGLONG>(days) * 864'000'000'000;
    const FILETIME then{time.LowPart, time.HighPart};
    SetFileTime(file, nullptr, nullptr, &then);
    CloseHandle(file);
}

String NumberedFile(const wchar_t* digits)
{
    return GetTempFolder(true) + L"trelmo" + String(&PATH_SEPARATOR, 0, 1) + L"_23_old" + digits + L".tmp";
}

} // namespace

TEST_F(TempFiles, NamesAndPlaces)
{
    clsRegEx form(L"^_23_ZIP[0-9a-f]+\\.tmp$", 0);
    for (const wchar_t* extension : {L"tmp", L".tmp"})
    {
        const String name = MakeTempFile(L"trelmo", L"ZIP", extension, true, nullptr);
        EXPECT_TRUE(form.Match(GetPathName(name), nullptr)) << ::testing::PrintToString(name.Text());
        EXPECT_STREQ(
            GetPathDirectory(name).Text(), (GetTempFolder(true) + L"trelmo" + String(&PATH_SEPARATOR, 0, 1)).Text());
        WIN32_FILE_ATTRIBUTE_DATA data{};
        EXPECT_TRUE(GetFileData(name, data));
        EXPECT_EQ(data.nFileSizeLow, 0u);
        EXPECT_TRUE(DeleteFileW(name));
    }
}

TEST_F(TempFiles, VanishWithTheirHandle)
{
    clsGenericHandleObjectAutoRelease holder;
    const String name = MakeTempFile(L"trelmo", L"x", L"tmp", true, &holder);
    EXPECT_TRUE(Exists(name));
    holder.Release();
    EXPECT_FALSE(Exists(name));

    clsFileRWTemp file;
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(file.clsFile::Write("abc", 3), 3);
    EXPECT_EQ(file.GetSize(), 3);
    file.Close();
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(TempFiles, FallIntoTheTempFolderWithoutASubfolder)
{
    const String obstacle = GetTempFolder(true) + L"obstacle";
    CloseHandle(CreateFileW(obstacle, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const String name = MakeTempFile(L"obstacle\\below", L"x", L"tmp", true, nullptr);
    EXPECT_STREQ(GetPathDirectory(name).Text(), GetTempFolder(true).Text());
    EXPECT_TRUE(DeleteFileW(name));
    EXPECT_TRUE(DeleteFileW(obstacle));
}

TEST_F(TempFiles, StaleOnesAreTakenOver)
{
    DeleteFileW(MakeTempFile(L"trelmo", L"x", L"tmp", true, nullptr)); // the folder is there
    MakeOldFile(NumberedFile(L"10"), 6);
    MakeOldFile(NumberedFile(L"11"), 8);
    MakeOldFile(NumberedFile(L"12"), 8);

    // Six days are too fresh.
    nextNumber = 0x10;
    clsGenericHandleObjectAutoRelease holder;
    EXPECT_STREQ(MakeTempFile(L"trelmo", L"old", L"tmp", true, &holder, CountedNumber).Text(), NumberedFile(L"11"));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(holder.Get(), &size));
    EXPECT_EQ(size.QuadPart, 0);

    // One in use is left alone, and without a holder nothing is taken over.
    nextNumber = 0x11;
    const String fresh = MakeTempFile(L"trelmo", L"old", L"tmp", true, nullptr, CountedNumber);
    EXPECT_STREQ(fresh.Text(), NumberedFile(L"13").Text());
    holder.Release();
    EXPECT_FALSE(Exists(NumberedFile(L"11")));
    for (const wchar_t* digits : {L"10", L"12", L"13"})
        EXPECT_TRUE(DeleteFileW(NumberedFile(digits)));
}

TEST_F(TempFiles, ThreadsNeverShareAName)
{
    constexpr int threadCount = 4, namesEach = 50;
    std::vector<String> names(threadCount * namesEach);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back(
            [&names, t]
            {
                for (int i = 0; i < namesEach; ++i)
                    names[static_cast<std::size_t>(t * namesEach + i)] =
                        MakeTempFile(L"trelmo", L"t", L"tmp", true, nullptr);
            });
    for (std::thread& thread : threads)
        thread.join();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
    for (const String& name : names)
        EXPECT_TRUE(DeleteFileW(name));
}
