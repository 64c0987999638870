// Named mappings within a process and between processes. The second process is this program.
#include "mappings.h"

using namespace qxtest;

namespace
{

TEST_F(Mappings, ViewsShareTheMemory)
{
    EXPECT_ERROR(ERROR_FILE_NOT_FOUND, OpenExisting());
    Handle first = Create();
    ASSERT_TRUE(first);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    Handle second = Create(50);
    ASSERT_TRUE(second);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});

    char* const view = static_cast<char*>(MapViewOfFile(first, FILE_MAP_WRITE, 0, 0, 0));
    const char* const same = static_cast<const char*>(MapViewOfFile(second, FILE_MAP_READ, 0, 0, kMappingSize));
    const char* const part = static_cast<const char*>(MapViewOfFile(second, FILE_MAP_READ, 0, 0x10000, 0));
    ASSERT_TRUE(view != nullptr && same != nullptr && part != nullptr);
    view[kMappingSize - 1] = 'x';
    EXPECT_EQ(same[kMappingSize - 1], 'x');
    EXPECT_EQ(part[kMappingSize - 1 - 0x10000], 'x');

    // Larger than the mapping, beyond its end, not aligned.
    EXPECT_ERROR(ERROR_ACCESS_DENIED, MapViewOfFile(first, FILE_MAP_READ, 0, 0, 2 * kMappingSize));
    EXPECT_ERROR(ERROR_ACCESS_DENIED, MapViewOfFile(first, FILE_MAP_READ, 0, 0x10000, kMappingSize));
    if (kIsLayer) // Wine has another error
    {
        EXPECT_ERROR(ERROR_ACCESS_DENIED, MapViewOfFile(first, FILE_MAP_READ, 1, 0, 1));
    }
    EXPECT_ERROR(ERROR_MAPPED_ALIGNMENT, MapViewOfFile(first, FILE_MAP_READ, 0, 4096 + 1, 1));
    const Handle readOnly = OpenExisting(FILE_MAP_READ);
    EXPECT_ERROR(ERROR_ACCESS_DENIED, MapViewOfFile(readOnly, FILE_MAP_WRITE, 0, 0, 1));

    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_TRUE(UnmapViewOfFile(part));
    EXPECT_EQ(same[kMappingSize - 1], 'x') << "a view that remains";
    EXPECT_TRUE(UnmapViewOfFile(same));
    EXPECT_ERROR(ERROR_INVALID_ADDRESS, UnmapViewOfFile(same));
    EXPECT_ERROR(
        ERROR_INVALID_PARAMETER, CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 0, nullptr));
}

TEST_F(Mappings, TheLastHandleRemovesTheName)
{
    const Folder folder;
    Handle mapping = Create();
    ASSERT_TRUE(mapping);
    Handle(OpenExisting()).Close();
    Peer peer("map", folder / L"file", GetCurrentProcessId(), 0); // adds one to the first byte
    ASSERT_TRUE(peer.WaitUntilReady());
    const auto* const view = static_cast<const BYTE*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 1));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(*view, 1);
    EXPECT_TRUE(UnmapViewOfFile(view));
    mapping.Close();
    EXPECT_TRUE(OpenExisting()) << "the other process has a handle";
    peer.Kill(0);
    EXPECT_ERROR(ERROR_FILE_NOT_FOUND, OpenExisting());
}

} // namespace
