// Drives that are connected to shares. The layer reads the connections from links.
#include "system_support.h"

#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#ifndef _WIN32 // for the tests of the layer
#include "support/own_drives.h"
#endif

using namespace qxtest;

namespace
{

TEST(Network, DrivesWithoutAShare)
{
    alignas(UNIVERSAL_NAME_INFOW) BYTE block[200];
    DWORD size = sizeof block;
    for (const wchar_t* const path : {L"C:\\x", L"Z:\\x"})
        EXPECT_EQ(WNetGetUniversalNameW(path, UNIVERSAL_NAME_INFO_LEVEL, block, &size), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(size, sizeof block);
    EXPECT_EQ(WNetCloseEnum(nullptr), DWORD{ERROR_INVALID_HANDLE});
}

#ifndef _WIN32 // Wine has no connected drives

using Entries = std::vector<std::pair<std::string, std::string>>;

constexpr DWORD kAll = 0xFFFFFFFF;

// An enumeration whose blocks are followed by bytes that no call may change.
class Walk
{
public:
    Walk() { EXPECT_EQ(WNetOpenEnumW(RESOURCE_REMEMBERED, RESOURCETYPE_DISK, 0, nullptr, &_handle), DWORD{0}); }
    ~Walk() { EXPECT_EQ(WNetCloseEnum(_handle), DWORD{0}); }

    DWORD Read(DWORD wanted, DWORD size, Entries& entries)
    {
        std::vector<std::byte> block(size + 16, std::byte{0xA5});
        lastSize = size;
        DWORD count = wanted;
        const DWORD result = WNetEnumResourceW(_handle, &count, block.data(), &lastSize);
        EXPECT_EQ(std::count(block.begin() + size, block.end(), std::byte{0xA5}), 16);
        for (DWORD i = 0; result == ERROR_SUCCESS && i < count; ++i)
        {
            NETRESOURCEW entry;
            std::memcpy(&entry, block.data() + i * sizeof entry, sizeof entry);
            EXPECT_EQ(entry.dwType, DWORD{RESOURCETYPE_DISK});
            entries.emplace_back(Text(entry.lpLocalName).Narrow(), Text(entry.lpRemoteName).Narrow());
        }
        return result;
    }

    DWORD lastSize = 0;

private:
    HANDLE _handle = nullptr;
};

TEST(NetworkOfTheLayer, RelativeLinksToSharesAreConnections)
{
    const OwnDrives drives;
    drives.MakeShare("server", "share");
    drives.Link("q:", "unc/server/share");
    drives.Link("b:", "unc/gone/Unreachable/"); // listed whether or not the share exists
    const std::string longName(300, 'n');
    const std::pair<const char*, std::string> others[] = {{"c:", "/tmp"}, {"d:", "../drive"}, {"e:", "unc/server"},
        {"f:", "unc/server/share/sub"}, {"g:", "unc//share"}, {"h:", "unc/../share"}, {"i:", "unc/server/.."},
        {"j:", "unc/a\\b/share"}, {"k:", "./unc/server/share"}, {"l:", "l:"}, {"m:", "q:"}, {"n:", "unc/"},
        {"z:", "unc/server/share"}, {"R:", "unc/server/share"}, {"rr:", "unc/server/share"}};
    for (const auto& [drive, target] : others)
        drives.Link(drive, target);
    drives.Link("x:", "unc/" + longName + "/\xFF"); // longer than a name can be, and not UTF-8
    Entries entries;
    Walk walk;
    EXPECT_EQ(walk.Read(kAll, 16000, entries), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(walk.Read(kAll, 16000, entries), DWORD{ERROR_NO_MORE_ITEMS});
    ASSERT_FALSE(entries.empty());
    entries.back().second.clear();
    EXPECT_EQ(entries, (Entries{{"B:", "\\\\gone\\Unreachable"}, {"Q:", "\\\\server\\share"}, {"X:", ""}}));
}

TEST(NetworkOfTheLayer, WalksFillBlocksOfAnySize)
{
    const OwnDrives drives;
    for (const char* const drive : {"a:", "b:", "c:"})
        drives.Link(drive, "unc/server/share");
    const DWORD one = sizeof(NETRESOURCEW) + (3 + 15) * sizeof(wchar_t);
    Entries entries;
    Walk walk;
    drives.Link("d:", "unc/late/share"); // too late for an enumeration that has begun
    EXPECT_EQ(walk.Read(kAll, one - 1, entries), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(walk.lastSize, one);
    EXPECT_EQ(walk.Read(kAll, 2 * one - 1, entries), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(entries.size(), 1u);
    EXPECT_EQ(walk.Read(1, 16000, entries), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(entries.size(), 2u);
    EXPECT_EQ(walk.Read(kAll, one, entries), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(walk.Read(kAll, one, entries), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_EQ(entries.back(), std::make_pair(std::string("C:"), std::string("\\\\server\\share")));

    HANDLE handle = GetCurrentProcess(); // not the handle of an enumeration
    DWORD size = one;
    EXPECT_EQ(WNetEnumResourceW(handle, &size, &handle, &size), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(WNetOpenEnumW(2, RESOURCETYPE_DISK, 0, nullptr, &handle), DWORD{ERROR_NOT_SUPPORTED});
}

TEST(NetworkOfTheLayer, UniversalNames)
{
    const OwnDrives drives;
    drives.Link("q:", "unc/server/share");
    constexpr std::pair<const wchar_t*, const char*> kNames[] = {{L"Q:\\a\\b", "\\\\server\\share\\a\\b"},
        {L"q:", "\\\\server\\share"}, {L"Q:\\", "\\\\server\\share\\"}, {L"Q:a/b", "\\\\server\\share\\a\\b"}};
    for (const auto& [path, name] : kNames)
    {
        DWORD size = 0;
        EXPECT_EQ(WNetGetUniversalNameW(path, UNIVERSAL_NAME_INFO_LEVEL, nullptr, &size), DWORD{ERROR_MORE_DATA});
        EXPECT_EQ(size, sizeof(UNIVERSAL_NAME_INFOW) + (std::strlen(name) + 1) * sizeof(wchar_t));
        std::vector<std::max_align_t> block(size / sizeof(std::max_align_t) + 1);
        EXPECT_EQ(WNetGetUniversalNameW(path, UNIVERSAL_NAME_INFO_LEVEL, block.data(), &size), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(Text(reinterpret_cast<UNIVERSAL_NAME_INFOW*>(block.data())->lpUniversalName).Narrow(), name);
        --size;
        EXPECT_EQ(WNetGetUniversalNameW(path, UNIVERSAL_NAME_INFO_LEVEL, block.data(), &size), DWORD{ERROR_MORE_DATA});
    }
    DWORD size = 0;
    EXPECT_EQ(WNetGetUniversalNameW(L"Q:\\a", 2, nullptr, &size), DWORD{ERROR_INVALID_LEVEL});
    for (const wchar_t* const path : {L"/a", L"", L"1:\\a", L"\\\\server\\share"})
        EXPECT_EQ(WNetGetUniversalNameW(path, 1, nullptr, &size), DWORD{ERROR_BAD_DEVICE}) << Text(path).Narrow();
}

#endif

} // namespace
