// Opening, reading, writing, sharing between the handles of one process, deleting.
#include "system_support.h"

using namespace qxtest;

namespace
{

constexpr DWORD readWrite = GENERIC_READ | GENERIC_WRITE;

TEST(FilesOpen, DispositionsTellWhatTheyFound)
{
    constexpr struct
    {
        DWORD value;
        bool isThere;
        DWORD error;     // after a failure
        DWORD lastError; // after a success
        const char* content;
    } cases[] = {{CREATE_NEW, false, 0, 0, ""}, {CREATE_NEW, true, ERROR_FILE_EXISTS, 0, "data"},
        {CREATE_ALWAYS, false, 0, 0, ""}, {CREATE_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, 0, ""}, {OPEN_EXISTING, true, 0, 0, "data"},
        {OPEN_ALWAYS, false, 0, 0, ""}, {OPEN_ALWAYS, true, 0, ERROR_ALREADY_EXISTS, "data"}};
    const Folder folder;
    const Text path = folder / L"file";
    for (const auto& expected : cases)
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
    const struct
    {
        Text path;
        DWORD disposition, error;
    } cases[] = {{L"", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"missing/file", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"file/below", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {folder / L"file/", OPEN_EXISTING, ERROR_INVALID_NAME}, {folder / L"new/", CREATE_ALWAYS, ERROR_INVALID_NAME},
        {folder.path(), OPEN_EXISTING, ERROR_ACCESS_DENIED}, // a folder is no file
        {folder.path(), CREATE_NEW, ERROR_FILE_EXISTS}};
    for (const auto& [path, disposition, error] : cases)
        EXPECT_EQ(OpenError(path, GENERIC_READ, shareAll, disposition), error) << path.Narrow();
    EXPECT_FALSE(Exists(folder / L"new"));
}

// Each pair of openings, as access and share mode of the first and of the second.
constexpr struct
{
    DWORD firstAccess, firstShare, secondAccess, secondShare;
    bool mayBoth;
} sharingPairs[] = {{GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, 0, false},
    {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, shareAll, false}, {GENERIC_READ, 0, GENERIC_READ, shareAll, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, false},
    {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_WRITE, FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_WRITE, true},
    {readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
    {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, DELETE, shareAll, false},
    {GENERIC_READ, FILE_SHARE_DELETE, DELETE, FILE_SHARE_READ, true},
    {DELETE, shareAll, GENERIC_READ, FILE_SHARE_READ, false}, {DELETE, 0, GENERIC_READ, shareAll, false},
    // Who only looks at attributes neither disturbs nor is disturbed.
    {0, 0, readWrite, 0, true}, {readWrite, 0, 0, 0, true}};

TEST(FilesOpen, SharingBetweenHandles)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "precious");
    for (const auto& pair : sharingPairs)
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
    // Of several that share with each other, the last one disturbs only the first.
    const Handle writer = Open(path, readWrite, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const Handle reader = Open(path, GENERIC_READ, shareAll);
    EXPECT_TRUE(writer && reader);
    EXPECT_FALSE(Open(path, GENERIC_READ, FILE_SHARE_READ));
    EXPECT_EQ(OpenError(path, GENERIC_WRITE, 0, CREATE_ALWAYS), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(BytesOf(path), "precious") << "a refused replacement leaves the content";
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
    for (const Handle* handle : {&writer, &looker})
        EXPECT_EQ(ErrorOf([&] { return ReadFile(*handle, &byte, 1, &count, nullptr); }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf([&] { return ReadFile(reader, nullptr, 3, &count, nullptr); }), DWORD{ERROR_NOACCESS});
}

TEST(FilesOpen, PointerAndSize)
{
    const Folder folder;
    const Handle file = Open(folder / L"file", readWrite, 0, CREATE_NEW);
    EXPECT_TRUE(WriteBytes(file, "0123456789"));
    const auto seek = [&file](LONGLONG by, DWORD from)
    {
        LARGE_INTEGER distance{}, position{};
        distance.QuadPart = by;
        return SetFilePointerEx(file, distance, &position, from) ? position.QuadPart : -LONGLONG{GetLastError()};
    };
    EXPECT_EQ(seek(-20, FILE_CURRENT), -ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(seek(0, FILE_CURRENT), 10) << "a failure moves nothing";
    EXPECT_EQ(seek(4, FILE_BEGIN), 4);
    EXPECT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(seek(2, FILE_END), 6);
    EXPECT_TRUE(WriteBytes(file, "x"));
    seek(0, FILE_BEGIN);
    EXPECT_EQ(ReadBytes(file), std::string("0123\0\0x", 7));
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
    EXPECT_EQ(error(folder.path()), DWORD{ERROR_ACCESS_DENIED});
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
        EXPECT_EQ(OpenError(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE), DWORD{ERROR_SHARING_VIOLATION})
            << "must share deletion";
        Handle reader = Open(path, GENERIC_READ, shareAll);
        EXPECT_TRUE(reader);
        file.Close();
        reader.Close();
        EXPECT_FALSE(Exists(path));
    }
    // A file that is open already must have been opened with deletion shared.
    MakeFile(path);
    {
        const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(OpenError(path, GENERIC_READ, shareAll, OPEN_EXISTING, flags), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(Exists(path));
    EXPECT_TRUE(Open(path, GENERIC_READ, shareAll, OPEN_EXISTING, flags));
    EXPECT_FALSE(Exists(path));
}

} // namespace
