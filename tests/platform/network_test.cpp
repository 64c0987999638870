// Connections of drives with shares, as far as the system has none.
#include "system_support.h"

#include <winnetwk.h>

using namespace qxtest;

namespace
{

TEST(Network, DrivesWithoutAShare)
{
    alignas(UNIVERSAL_NAME_INFOW) BYTE block[200];
    DWORD size = sizeof block;
    EXPECT_EQ(WNetGetUniversalNameW(L"C:\\x", UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(WNetGetUniversalNameW(L"Z:\\x", UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(size, sizeof block);
    EXPECT_EQ(WNetCloseEnum(nullptr), DWORD{ERROR_INVALID_HANDLE});
}

} // namespace
