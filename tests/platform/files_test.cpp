// Opening and sharing between the handles of one process; all forms of paths, finds, attributes and times.
#include "system_support.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <tuple>
#include <utility>

using namespace qxtest;

namespace
{

class Files : public testing::Test
{
protected:
    const Folder folder;
    const Text path = folder / L"file";
};

TEST_F(Files, DispositionsTellWhatTheyFound)
{
    // The disposition, whether the file exists, the last error on failure, the last error on success, and the contents.
    constexpr std::tuple<DWORD, bool, DWORD, DWORD, const char*> kCases[] = {{CREATE_NEW, false, 0, 0, ""},
        {CREATE_NEW, true, ERROR_FILE_EXISTS, 0, "data"}, {CREATE_ALWAYS, false, 0, 0, ""},
        {CREATE_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, ""}, {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, 0, ""},
        {OPEN_EXISTING, true, 0, 0, "data"}, {OPEN_ALWAYS, false, 0, 0, ""},
        {OPEN_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, "data"}};
    for (const auto& [value, isThere, failure, lastError, content] : kCases)
    {
        SCOPED_TRACE(testing::Message() << "disposition " << value << ", there: " << isThere);
        DeleteFileW(path);
        if (isThere)
            MakeFile(path);
        SetLastError(0xBEEF);
        Handle file = Open(path, kReadWrite, 0, value);
        const DWORD error = GetLastError();
        EXPECT_EQ(static_cast<bool>(file), failure == 0);
        EXPECT_EQ(error, failure != 0 ? failure : lastError);
        file.Close();
        EXPECT_EQ(Exists(path), isThere || failure == 0);
        if (Exists(path))
        {
            EXPECT_EQ(BytesOf(path), content);
        }
    }
}

TEST_F(Files, PathsThatLeadNowhere)
{
    MakeFile(path);
    const std::tuple<Text, DWORD, DWORD> cases[] = {{L"", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"missing/file", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"file/below", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"file/", OPEN_EXISTING, ERROR_INVALID_NAME}, {folder / L"new/", CREATE_ALWAYS, ERROR_INVALID_NAME},
        {folder.path(), OPEN_EXISTING, ERROR_ACCESS_DENIED}, // a folder is not a file
        {folder / L"missing", OPEN_EXISTING, ERROR_FILE_NOT_FOUND}, {folder.path(), CREATE_NEW, ERROR_FILE_EXISTS}};
    for (const auto& [place, disposition, error] : cases)
        EXPECT_EQ(OpenError(place, GENERIC_READ, kShareAll, disposition), error) << place.Narrow();
    EXPECT_FALSE(Exists(folder / L"new"));

    EXPECT_TRUE(CreateDirectoryW(folder / L"sub/", nullptr));
    for (const auto& [name, error] : {std::pair(folder / L"sub", ERROR_ALREADY_EXISTS),
             {folder / L"file", ERROR_ALREADY_EXISTS}, {folder / L"file/x", ERROR_PATH_NOT_FOUND},
             {folder / L"a/b", ERROR_PATH_NOT_FOUND}, {L"", ERROR_PATH_NOT_FOUND}})
        EXPECT_EQ(ErrorOf([&name = name] { return CreateDirectoryW(name, nullptr); }), DWORD(error)) << name.Narrow();
}

// Pairs of opens: access and sharing mode of the first one and of the second one, and whether both may succeed.
constexpr struct
{
    DWORD firstAccess, firstShare, secondAccess, secondShare;
    bool mayBoth;
} kSharingPairs[] = {{GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, 0, false},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, kShareAll, false}, {GENERIC_READ, 0, GENERIC_READ, kShareAll, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_WRITE, FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_WRITE, true},
    {kReadWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, kReadWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, DELETE, kShareAll, false},
    {GENERIC_READ, FILE_SHARE_DELETE, DELETE, FILE_SHARE_READ, true},
    {DELETE, kShareAll, GENERIC_READ, FILE_SHARE_READ, false}, {DELETE, 0, GENERIC_READ, kShareAll, false},
    // Opens for attributes only don't conflict with any others.
    {0, 0, kReadWrite, 0, true}, {kReadWrite, 0, 0, 0, true}};

TEST_F(Files, SharingBetweenHandles)
{
    MakeFile(path, "precious");
    for (const auto& pair : kSharingPairs)
    {
        SCOPED_TRACE(testing::Message() << std::hex << pair.firstAccess << '/' << pair.firstShare << " then "
                                        << pair.secondAccess << '/' << pair.secondShare);
        Handle first = Open(path, pair.firstAccess, pair.firstShare);
        EXPECT_TRUE(first);
        EXPECT_EQ(
            OpenError(path, pair.secondAccess, pair.secondShare), pair.mayBoth ? 0 : DWORD{ERROR_SHARING_VIOLATION});
        first.Close();
        EXPECT_TRUE(Open(path, pair.secondAccess, pair.secondShare)) << "free again";
    }
    // Of several opens that share with each other, the last one conflicts only with the first.
    const Handle writer = Open(path, kReadWrite, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const Handle reader = Open(path, GENERIC_READ, kShareAll);
    EXPECT_TRUE(writer && reader);
    EXPECT_FALSE(Open(path, GENERIC_READ, FILE_SHARE_READ));
    EXPECT_EQ(OpenError(path, GENERIC_WRITE, 0, CREATE_ALWAYS), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(BytesOf(path), "precious") << "a refused replacement leaves the content";
}

TEST_F(Files, DeletedWithTheLastHandle)
{
    constexpr DWORD kFlags = FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY;
    {
        const Handle file = Open(path, kReadWrite, FILE_SHARE_READ, CREATE_NEW, kFlags);
        EXPECT_TRUE(WriteBytes(file, "temporary"));
        EXPECT_ERROR(ERROR_SHARING_VIOLATION, Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE));
        EXPECT_TRUE(Open(path, GENERIC_READ, kShareAll));
    }
    EXPECT_FALSE(Exists(path));
    // If a file is already open, it must have been opened with FILE_SHARE_DELETE.
    MakeFile(path);
    {
        const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(OpenError(path, GENERIC_READ, kShareAll, OPEN_EXISTING, kFlags), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(Exists(path));
    EXPECT_TRUE(Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING, kFlags));
    EXPECT_FALSE(Exists(path));
}

// Returns the path with slashes and without the part before the first one.
std::string WithoutDrive(const Text& path)
{
    std::string narrow = path.Narrow();
    std::replace(narrow.begin(), narrow.end(), '\\', '/');
    return narrow.substr(narrow.find('/'));
}

// Returns the names that a pattern finds in a folder, without "." and "..".
std::set<std::string> Find(const Text& pattern)
{
    std::set<std::string> names;
    WIN32_FIND_DATAW data;
    const HANDLE find = FindFirstFileW(pattern, &data);
    if (find == INVALID_HANDLE_VALUE)
        return {"error " + std::to_string(GetLastError())};
    do
    {
        const std::string name = Text(data.cFileName).Narrow();
        if (name != "." && name != "..")
            names.insert(name);
    } while (FindNextFileW(find, &data));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
    EXPECT_TRUE(FindClose(find));
    return names;
}

TEST_F(Files, FullPathsAreResolvedInTheText)
{
    constexpr std::pair<const wchar_t*, const char*> kCases[] = {{L"/a/./b/../c", "/a/c"}, {L"/a//b\\\\c", "/a/b/c"},
        {L"/../../a", "/a"}, {L"/", "/"}, {L"/a/b/../", "/a/"}, {L"/missing/../a", "/a"}};
    for (const auto& [form, expected] : kCases)
        EXPECT_EQ(WithoutDrive(FullPath(form)), expected) << Text(form).Narrow();

    MakeFile(path, "found");
    EXPECT_EQ(BytesOf(folder / L"nosuchfolder/../file"), "found") << "resolved in the text here too";
}

TEST_F(Files, PatternsAndWhatTheFileIs)
{
    for (const wchar_t* const name :
        {L"a", L"a.txt", L"ab.txt", L"a.b.txt", L"a.txt.bak", L"readme", L"x.TXT", L"_23_1.tmp"})
        MakeFile(folder / name);
    ASSERT_TRUE(CreateDirectoryW(folder / L"sub", nullptr));
    using Names = std::set<std::string>;
    const Names all{"a", "a.txt", "ab.txt", "a.b.txt", "a.txt.bak", "readme", "x.TXT", "_23_1.tmp", "sub"};
    struct
    {
        const wchar_t* pattern;
        Names expected;
        bool isLayerOnly = false; // Wine matches `?` to exactly one character and a final dot to nothing
    } const cases[] = {{L"*.*", all}, {L"*.txt", {"a.txt", "ab.txt", "a.b.txt", "x.TXT"}},
        {L"A*.TXT", {"a.txt", "ab.txt", "a.b.txt"}}, {L"??.txt", {"a.txt", "ab.txt", "x.TXT"}, true},
        {L"a*.*.*", {"a", "a.txt", "a.b.txt", "ab.txt", "a.txt.bak"}}, {L"*.", {"a", "readme", "sub"}, true},
        {L"*a*", {"a", "a.txt", "ab.txt", "a.b.txt", "a.txt.bak", "readme"}}, {L"*.nothing", {"error 2"}},
        {L"missing/*", {"error 3"}}};
    for (const auto& [pattern, expected, isLayerOnly] : cases)
    {
        if (kIsLayer || !isLayerOnly)
        {
            EXPECT_EQ(Find(folder / pattern), expected) << Text(pattern).Narrow();
        }
    }
    EXPECT_EQ(Find(L""), Names{"error 3"});

    MakeFile(folder / L"readme", "12345");
    for (const wchar_t* const pattern : {L"readme", L"read*"})
    {
        WIN32_FIND_DATAW data{};
        const HANDLE find = FindFirstFileW(folder / pattern, &data);
        EXPECT_EQ(Text(data.cFileName), Text(L"readme"));
        EXPECT_EQ(data.nFileSizeLow, 5u);
        EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_ARCHIVE});
        EXPECT_ERROR(ERROR_INVALID_HANDLE, CloseHandle(find)) << "has its own function";
        EXPECT_TRUE(FindClose(find));
        EXPECT_ERROR(ERROR_INVALID_HANDLE, FindNextFileW(find, &data));
    }
}

TEST_F(Files, AttributesAreKept)
{
    MakeFile(path);
    EXPECT_EQ(GetFileAttributesW(folder.path()), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(GetFileAttributesW(path), DWORD{FILE_ATTRIBUTE_ARCHIVE});

    EXPECT_TRUE(SetFileAttributesW(path, FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesW(path), DWORD{FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE});
    EXPECT_TRUE(Open(path, GENERIC_READ, 0));
    if (kIsLayer) // under Wine the administrator may write nevertheless
    {
        EXPECT_ERROR(ERROR_ACCESS_DENIED, Open(path, GENERIC_WRITE, 0));
        EXPECT_ERROR(ERROR_ACCESS_DENIED, Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS));
        EXPECT_ERROR(ERROR_ACCESS_DENIED, Open(path, GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE));
    }
    EXPECT_TRUE(SetFileAttributesW(path, FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetFileAttributesW(path), DWORD{FILE_ATTRIBUTE_ARCHIVE});
    EXPECT_TRUE(Open(path, kReadWrite, 0));

    // A new file may be created read-only; its creator can still write it.
    const Text second = folder / L"second";
    EXPECT_TRUE(WriteBytes(Open(second, kReadWrite, 0, CREATE_NEW, FILE_ATTRIBUTE_READONLY), "bytes"));
    EXPECT_NE(GetFileAttributesW(second) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_EQ(BytesOf(second), "bytes");
    SetFileAttributesW(second, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Files, Times)
{
    Handle file = Open(path, kReadWrite, kShareAll, CREATE_NEW);
    FILETIME now, creation, access, write;
    GetSystemTimeAsFileTime(&now);
    const auto seconds = [](const FILETIME& time)
    {
        return static_cast<double>(ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime) / 1e7;
    };
    // A last write eight days ago must be read back exactly, because callers compare this time to detect changed files.
    FILETIME old = now;
    old.dwHighDateTime -= 1610; // 8.0 days
    old.dwLowDateTime = 1234567890;
    EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &old));
    EXPECT_TRUE(GetFileTime(file, &creation, &access, &write));
    EXPECT_EQ(std::memcmp(&write, &old, sizeof old), 0);
    EXPECT_NEAR(seconds(access), seconds(now), 5);
    if (kIsLayer) // Wine returns the last write
    {
        EXPECT_NEAR(seconds(creation), seconds(now), 5);
    }
    EXPECT_TRUE(WriteBytes(file, "new"));
    EXPECT_TRUE(GetFileTime(file, nullptr, nullptr, &write));
    EXPECT_NEAR(seconds(write), seconds(now), 5) << "writing moves it";
}

} // namespace
