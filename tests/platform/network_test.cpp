// Connections of drives with shares, as far as the system has none.
#include "system_support.h"

#include <winnetwk.h>

using namespace qxtest;

namespace
{

TEST(Network, DrivesWithoutAShareHaveNoUniversalName)
{
    alignas(UNIVERSAL_NAME_INFOW) BYTE block[200];
    DWORD size = sizeof block;
    EXPECT_EQ(WNetGetUniversalNameW(L"C:\\x", UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(WNetGetUniversalNameW(L"Z:\\x", UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(size, sizeof block);
    EXPECT_NE(WNetGetUniversalNameW(L"\\x", UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_SUCCESS});
}

TEST(Network, OnlyWalksAreReadAndClosed)
{
    const Folder folder;
    MakeFile(folder / L"file");
    const Handle file = Open(folder / L"file", GENERIC_READ, kShareAll);
    DWORD count = 1;
    DWORD size = 8;
    BYTE block[8] = {};
    EXPECT_NE(WNetEnumResourceW(nullptr, &count, block, &size), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(WNetCloseEnum(nullptr), DWORD{ERROR_INVALID_HANDLE});
    if (kIsLayer) // Wine reads the memory behind the handle
    {
        EXPECT_EQ(WNetEnumResourceW(file, &count, block, &size), DWORD{ERROR_INVALID_HANDLE});
        EXPECT_EQ(WNetCloseEnum(file), DWORD{ERROR_INVALID_HANDLE});
    }
    EXPECT_EQ(ReadBytes(file), "data");
}

} // namespace
