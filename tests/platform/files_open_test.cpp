// Opening, reading, writing, sharing between the handles of one process, attributes, deleting.
#include "system_support.h"

using namespace qxtest;

namespace
{

constexpr DWORD readWrite = GENERIC_READ | GENERIC_WRITE;

struct Disposition
{
    DWORD value;
    bool isThere;
    DWORD error;     // after a failure
    DWORD lastError; // after a success
    const char* content;
};

TEST(FilesOpen, DispositionsTellWhatTheyFound)
{
    constexpr Disposition cases[] = {
        {CREATE_NEW, false, 0, 0, ""},
        {CREATE_NEW, true, ERROR_FILE_EXISTS, 0, "data"},
        {CREATE_ALWAYS, false, 0, 0, ""},
        {CREATE_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, 0, ""},
        {OPEN_EXISTING, true, 0, 0, "data"},
        {OPEN_ALWAYS, false, 0, 0, ""},
        {OPEN_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, "data"},
        {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, 0, ""},
        {TRUNCATE_EXISTING, true, 0, 0, ""},
        {77, true, ERROR_INVALID_PARAMETER, 0, "data"},
    };
    const Folder folder;
    const Text path = folder / L"file";
    for (const Disposition& expected : cases)
    {
        SCOPED_TRACE(testing::Message() << "disposition " << expected.value << ", there: " << expected.isThere);
        DeleteFileW(path);
        if (expected.isThere)
            MakeFile(path);
        SetLastError(0xBEEF);
        Handle file = Open(path, readWrite, 0, expected.value);
        const DWORD error = GetLastError();
        EXPECT_EQ(static_cast<bool>(file), expected.error == 0);
        EXPECT_EQ(error, expected.error != 0 ? expected.error : expected.lastError);
        file.Close();
        EXPECT_EQ(Exists(path), expected.isThere || expected.error == 0);
        if (Exists(path))
        {
            EXPECT_EQ(BytesOf(path), expected.content);
        }
    }
}

TEST(FilesOpen, PathsThatLeadNowhere)
{
    const Folder folder;
    MakeFile(folder / L"file");
    const auto error = [](const Text& path, DWORD disposition = OPEN_EXISTING)
    {
        return ErrorOf([&] { return static_cast<bool>(Open(path, GENERIC_READ, shareAll, disposition)); });
    };
    EXPECT_EQ(error(L""), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(error(folder / L"missing"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(error(folder / L"missing/file"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(error(folder / L"file/below"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(error(folder / L"file/"), DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(error(folder / L"new/", CREATE_ALWAYS), DWORD{ERROR_INVALID_NAME});
    EXPECT_FALSE(Exists(folder / L"new"));
    EXPECT_EQ(error(folder.path()), DWORD{ERROR_ACCESS_DENIED}) << "a folder is no file";
    EXPECT_EQ(error(folder.path(), CREATE_NEW), DWORD{ERROR_FILE_EXISTS});
    EXPECT_TRUE(Open(folder.path(), 0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS));
}

// Each pair of openings, as access and share mode of the first and of the second.
struct Pair
{
    DWORD firstAccess, firstShare, secondAccess, secondShare;
    bool mayBoth;
};

constexpr Pair sharingPairs[] = {
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, shareAll, true},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, 0, false},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, shareAll, false},
    {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, readWrite, FILE_SHARE_READ, true},
    {GENERIC_READ, FILE_SHARE_WRITE, GENERIC_READ, shareAll, false},
    {GENERIC_READ, 0, GENERIC_READ, shareAll, false},
    {GENERIC_WRITE, 0, GENERIC_READ, shareAll, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_WRITE, FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_WRITE, true},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_WRITE, FILE_SHARE_READ, false},
    {readWrite, FILE_SHARE_READ, readWrite, FILE_SHARE_READ, false},
    {readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, DELETE, shareAll, false},
    {GENERIC_READ, FILE_SHARE_DELETE, DELETE, FILE_SHARE_READ, true},
    {DELETE, shareAll, GENERIC_READ, FILE_SHARE_READ, false},
    {DELETE, 0, GENERIC_READ, shareAll, false},
    // Who only looks at attributes neither disturbs nor is disturbed.
    {0, 0, readWrite, 0, true},
    {readWrite, 0, 0, 0, true},
};

TEST(FilesOpen, SharingBetweenHandles)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path);
    for (const Pair& pair : sharingPairs)
    {
        SCOPED_TRACE(testing::Message() << std::hex << pair.firstAccess << '/' << pair.firstShare << " then "
                                        << pair.secondAccess << '/' << pair.secondShare);
        Handle first = Open(path, pair.firstAccess, pair.firstShare);
        EXPECT_TRUE(first);
        SetLastError(0);
        Handle second = Open(path, pair.secondAccess, pair.secondShare);
        EXPECT_EQ(GetLastError(), pair.mayBoth ? 0 : DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_EQ(static_cast<bool>(second), pair.mayBoth);
        second.Close();
        first.Close();
        EXPECT_TRUE(Open(path, pair.secondAccess, pair.secondShare)) << "free again";
    }
    // Several that share with each other, and a last one that disturbs only one of them.
    const Handle writer = Open(path, readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const Handle deletable = Open(path, GENERIC_READ, shareAll);
    EXPECT_TRUE(writer && reader && deletable);
    EXPECT_FALSE(Open(path, GENERIC_READ, FILE_SHARE_READ)) << "there is a writer";
    EXPECT_TRUE(Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE));
}

TEST(FilesOpen, RefusedReplacementLeavesTheContent)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "precious");
    {
        const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_EQ(ErrorOf([&] { return static_cast<bool>(Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS)); }),
            DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_EQ(BytesOf(path), "precious");
}

TEST(FilesOpen, HandlesDoWhatTheyWereOpenedFor)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "0123456789");
    const Handle reader = Open(path, GENERIC_READ, shareAll);
    const Handle writer = Open(path, GENERIC_WRITE, shareAll);
    const Handle looker = Open(path, 0, shareAll);
    char byte = 0;
    DWORD count = 7;
    EXPECT_EQ(ErrorOf([&] { return WriteFile(reader, "x", 1, &count, nullptr); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(ErrorOf([&] { return FlushFileBuffers(reader); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf([&] { return ReadFile(writer, &byte, 1, &count, nullptr); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf([&] { return ReadFile(looker, &byte, 1, &count, nullptr); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_FALSE(SetEndOfFile(reader));
    EXPECT_TRUE(FlushFileBuffers(writer));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(looker, &size));
    EXPECT_EQ(size.QuadPart, 10);
    EXPECT_EQ(ErrorOf([&] { return ReadFile(reader, nullptr, 3, &count, nullptr); }), DWORD{ERROR_NOACCESS});
    EXPECT_TRUE(ReadFile(reader, nullptr, 0, &count, nullptr));
}

TEST(FilesOpen, ForeignAndStaleHandles)
{
    const Folder folder;
    MakeFile(folder / L"file");
    const Handle open = Open(folder / L"file", GENERIC_READ, shareAll);
    const HANDLE stale = Open(folder / L"file", GENERIC_READ, shareAll);
    for (const HANDLE handle : {HANDLE{nullptr}, stale, reinterpret_cast<HANDLE>(0x12345678)})
    {
        char byte;
        DWORD count;
        LARGE_INTEGER size;
        EXPECT_EQ(ErrorOf([&] { return CloseHandle(handle); }), DWORD{ERROR_INVALID_HANDLE});
        EXPECT_EQ(ErrorOf([&] { return ReadFile(handle, &byte, 1, &count, nullptr); }), DWORD{ERROR_INVALID_HANDLE});
        EXPECT_EQ(ErrorOf([&] { return GetFileSizeEx(handle, &size); }), DWORD{ERROR_INVALID_HANDLE});
        EXPECT_EQ(ErrorOf([&] { return GetFileType(handle); }), DWORD{ERROR_INVALID_HANDLE});
        HANDLE copy = nullptr;
        EXPECT_EQ(ErrorOf(
                      [&] {
                          return DuplicateHandle(
                              GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
                      }),
            DWORD{ERROR_INVALID_HANDLE});
    }
    EXPECT_TRUE(CloseHandle(GetCurrentProcess())) << "nothing happens to a pseudo handle";
}

TEST(FilesOpen, DuplicatesAreEntriesOfTheirOwn)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "0123456789");
    Handle first = Open(path, GENERIC_READ, 0);
    const auto duplicate = [](HANDLE source, DWORD options)
    {
        HANDLE copy = nullptr;
        EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), source, GetCurrentProcess(), &copy, 0, FALSE, options));
        return Handle(copy);
    };
    Handle second = duplicate(first, DUPLICATE_SAME_ACCESS);
    EXPECT_NE(static_cast<HANDLE>(first), static_cast<HANDLE>(second));
    EXPECT_EQ(ReadBytes(first, 3), "012");
    EXPECT_EQ(ReadBytes(second, 3), "345") << "one file pointer";
    first.Close();
    EXPECT_EQ(ReadBytes(second, 3), "678");
    EXPECT_FALSE(Open(path, GENERIC_READ, shareAll)) << "the file is open as long as one handle is";
    const HANDLE source = second;
    Handle third = duplicate(second, DUPLICATE_SAME_ACCESS | DUPLICATE_CLOSE_SOURCE);
    third.Close();
    EXPECT_FALSE(CloseHandle(source));
    EXPECT_TRUE(Open(path, GENERIC_READ, shareAll));
}

TEST(FilesOpen, FilePointer)
{
    const Folder folder;
    const Handle file = Open(folder / L"file", readWrite, 0, CREATE_NEW);
    EXPECT_TRUE(WriteBytes(file, "0123456789"));
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 10u);
    EXPECT_EQ(SetFilePointer(file, -3, nullptr, FILE_END), 7u);
    EXPECT_EQ(ReadBytes(file), "789");
    EXPECT_EQ(ReadBytes(file), "") << "the end is no failure";

    EXPECT_EQ(SetFilePointer(file, -20, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NEGATIVE_SEEK});
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, 7), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 10u) << "a failure moves nothing";

    // A low part that looks like a failure.
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_BEGIN), 0xFFFFFFFF);
    EXPECT_EQ(GetLastError(), DWORD{NO_ERROR});
    EXPECT_EQ(high, 1);
    LARGE_INTEGER position{};
    EXPECT_TRUE(SetFilePointerEx(file, {}, &position, FILE_CURRENT));
    EXPECT_EQ(position.QuadPart, 0x1FFFFFFFF);

    LARGE_INTEGER distance{};
    distance.QuadPart = -0x200000000;
    EXPECT_EQ(
        ErrorOf([&] { return SetFilePointerEx(file, distance, &position, FILE_CURRENT); }), DWORD{ERROR_NEGATIVE_SEEK});

    // Both ways to change the size: the end moves to the pointer, bytes in between are zero.
    SetFilePointer(file, 4, nullptr, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file));
    SetFilePointer(file, 6, nullptr, FILE_BEGIN);
    EXPECT_TRUE(WriteBytes(file, "x"));
    EXPECT_EQ(GetFileSize(file, nullptr), 7u);
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    EXPECT_EQ(ReadBytes(file), std::string("0123\0\0x", 7));
}

// Wine gives the low 32 bits instead.
TEST(FilesOpen, PositionWithoutAPlaceForItsHighPart)
{
    if (!isLayer)
        GTEST_SKIP() << "Wine differs from the documentation";
    const Folder folder;
    const Handle file = Open(folder / L"file", readWrite, 0, CREATE_NEW);
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, 5, &high, FILE_BEGIN), 5u);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(FilesOpen, TransfersAtAGivenOffset)
{
    const Folder folder;
    const Handle file = Open(folder / L"file", readWrite, 0, CREATE_NEW);
    EXPECT_TRUE(WriteBytes(file, "0123456789"));
    OVERLAPPED at{};
    at.Offset = 2;
    char bytes[4] = {};
    DWORD count = 0;
    EXPECT_TRUE(ReadFile(file, bytes, 3, &count, &at));
    EXPECT_EQ(std::string(bytes, count), "234");
    EXPECT_TRUE(WriteFile(file, "ab", 2, &count, &at));
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 4u);
    at.Offset = 100;
    EXPECT_EQ(ErrorOf([&] { return ReadFile(file, bytes, 3, &count, &at); }), DWORD{ERROR_HANDLE_EOF});
}

TEST(FilesOpen, Deleting)
{
    const Folder folder;
    const Text path = folder / L"file";
    const auto error = [](const Text& name)
    {
        return ErrorOf([&] { return DeleteFileW(name); });
    };
    EXPECT_EQ(error(path), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(error(folder / L"missing/file"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(error(folder.path()), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(error(L""), DWORD{ERROR_PATH_NOT_FOUND});
    MakeFile(path);
    {
        const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(error(path), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(SetFileAttributesW(path, FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(error(path), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_TRUE(SetFileAttributesW(path, FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(DeleteFileW(path));
    EXPECT_FALSE(Exists(path));
}

TEST(FilesOpen, DeletedWithTheLastHandle)
{
    const Folder folder;
    const Text path = folder / L"file";
    constexpr DWORD flags = FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY;
    {
        Handle file = Open(path, readWrite, FILE_SHARE_READ, CREATE_NEW, flags);
        EXPECT_TRUE(WriteBytes(file, "temporary"));
        EXPECT_FALSE(Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE)) << "must share deletion";
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_TRUE(Open(path, GENERIC_READ, shareAll));
        HANDLE copy = nullptr;
        EXPECT_TRUE(
            DuplicateHandle(GetCurrentProcess(), file, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS));
        file.Close();
        EXPECT_TRUE(Exists(path));
        CloseHandle(copy);
        EXPECT_FALSE(Exists(path));
    }
    // A file that is open already must have been opened with deletion shared.
    MakeFile(path);
    {
        const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_FALSE(Open(path, GENERIC_READ, shareAll, OPEN_EXISTING, flags));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(Exists(path));
    EXPECT_TRUE(Open(path, GENERIC_READ, shareAll, OPEN_EXISTING, flags));
    EXPECT_FALSE(Exists(path));
}

TEST(FilesOpen, Moving)
{
    const Folder folder;
    const Text from = folder / L"from", to = folder / L"to";
    const auto move = [&](DWORD flags)
    {
        return ErrorOf([&] { return MoveFileExW(from, to, flags); });
    };
    EXPECT_EQ(move(0), DWORD{ERROR_FILE_NOT_FOUND});
    MakeFile(from, "new");
    MakeFile(to, "old");
    EXPECT_EQ(move(0), DWORD{ERROR_ALREADY_EXISTS});
    {
        const Handle reader = Open(from, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_EQ(move(MOVEFILE_REPLACE_EXISTING), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING));
    EXPECT_FALSE(Exists(from));
    EXPECT_EQ(BytesOf(to), "new");
    EXPECT_TRUE(MoveFileExW(to, from, 0));
    EXPECT_EQ(ErrorOf([&] { return MoveFileExW(from, folder / L"missing/to", 0); }), DWORD{ERROR_PATH_NOT_FOUND});
}

TEST(FilesOpen, Copying)
{
    const Folder folder;
    const Text from = folder / L"from", to = folder / L"to";
    EXPECT_EQ(ErrorOf([&] { return CopyFileW(from, to, FALSE); }), DWORD{ERROR_FILE_NOT_FOUND});
    std::string bytes(3'000'000, 'x');
    bytes[2'999'999] = 'y';
    MakeFile(from, bytes);
    EXPECT_TRUE(CopyFileW(from, to, TRUE));
    EXPECT_EQ(ReadBytes(Open(to, GENERIC_READ, 0), 4'000'000), bytes);
    EXPECT_EQ(ErrorOf([&] { return CopyFileW(from, to, TRUE); }), DWORD{ERROR_FILE_EXISTS});
    EXPECT_EQ(ErrorOf([&] { return CopyFileW(from, from, FALSE); }), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(ErrorOf([&] { return CopyFileW(from, folder / L"missing/to", FALSE); }), DWORD{ERROR_PATH_NOT_FOUND});
    WIN32_FILE_ATTRIBUTE_DATA first{}, second{};
    EXPECT_TRUE(GetFileAttributesExW(from, GetFileExInfoStandard, &first));
    EXPECT_TRUE(GetFileAttributesExW(to, GetFileExInfoStandard, &second));
    EXPECT_EQ(CompareFileTime(&first.ftLastWriteTime, &second.ftLastWriteTime), 0);
}

} // namespace
