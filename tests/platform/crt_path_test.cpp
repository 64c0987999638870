#include <gtest/gtest.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <tuple>

namespace
{

// Paths produced by the layer have the form of its own system.
#if defined(_WIN32)
constexpr wchar_t kSeparator = L'\\';
#else
constexpr wchar_t kSeparator = L'/';
#endif

TEST(CrtPath, SplitsIntoRoomThatFits)
{
    // The sizes of the buffers, and the result.
    constexpr std::tuple<std::size_t, std::size_t, std::size_t, std::size_t, int> kCases[] = {{3, 5, 3, 4, 0},
        {2, 5, 3, 4, ERANGE}, {3, 4, 3, 4, ERANGE}, {3, 5, 2, 4, ERANGE}, {3, 5, 3, 3, ERANGE}, {0, 5, 3, 4, EINVAL}};
    constexpr wchar_t kPath[] = L"c:\\ab\\cd.ef";
    for (const auto& [room, directoryRoom, nameRoom, extensionRoom, result] : kCases)
    {
        wchar_t drive[3] = L"", directory[5] = L"", name[3] = L"", extension[4] = L"";
        errno = 0;
        EXPECT_EQ(_wsplitpath_s(kPath, drive, room, directory, directoryRoom, name, nameRoom, extension, extensionRoom),
            result);
        EXPECT_EQ(errno, result);
        wchar_t parts[20];
        _snwprintf(parts, 20, L"%s|%s|%s|%s", drive, directory, name, extension);
        EXPECT_STREQ(parts, result == 0 ? L"c:|\\ab\\|cd|.ef" : L"|||");
    }
    wchar_t name[3];
    EXPECT_EQ(_wsplitpath_s(kPath, nullptr, 0, nullptr, 0, name, 3, nullptr, 0), 0);
    EXPECT_STREQ(name, L"cd");
    EXPECT_EQ(_wsplitpath_s(kPath, nullptr, 3, nullptr, 0, name, 3, nullptr, 0), EINVAL);
    EXPECT_EQ(_wsplitpath_s(nullptr, nullptr, 0, nullptr, 0, name, 3, nullptr, 0), EINVAL);
}

TEST(CrtPath, Makes)
{
    // The parts, and the path with `|` in place of an added separator.
    constexpr std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*> kCases[] = {
        {L"c", L"a", L"b", L"t", L"c:a|b.t"}, {L"cde", L"x/", L"y", L".z", L"c:x/y.z"}, {L"", L"", L"b", L"", L"b"},
        {nullptr, L"\\", L"b", L".", L"\\b."}, {nullptr, L"a", L"", L"t", L"a|.t"},
        {nullptr, nullptr, nullptr, nullptr, L""}};
    for (const auto& [drive, directory, name, extension, form] : kCases)
    {
        wchar_t expected[20];
        wcscpy(expected, form);
        if (wchar_t* added = wcschr(expected, L'|'))
            *added = kSeparator;
        wchar_t path[20];
        const std::size_t length = wcslen(expected);
        EXPECT_EQ(_wmakepath_s(path, length + 1, drive, directory, name, extension), 0);
        EXPECT_STREQ(path, expected);
        for (std::size_t size = 1; size <= length; ++size)
        {
            errno = 0;
            path[size] = L'~';
            EXPECT_EQ(_wmakepath_s(path, size, drive, directory, name, extension), ERANGE);
            EXPECT_EQ(errno, ERANGE);
            EXPECT_STREQ(path, L"");
            EXPECT_EQ(path[size], L'~');
        }
    }
    wchar_t path[2];
    EXPECT_EQ(_wmakepath_s(path, 0, L"c", L"a", L"b", L"t"), EINVAL);
    EXPECT_EQ(_wmakepath_s(nullptr, 2, L"c", L"a", L"b", L"t"), EINVAL);
}

} // namespace
