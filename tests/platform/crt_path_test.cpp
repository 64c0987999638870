#include <gtest/gtest.h>

#include <errno.h>
#include <stdlib.h>
#include <wchar.h>

namespace
{

// Paths produced by the layer have the form of its own system.
#if defined(_WIN32)
constexpr wchar_t kSeparator = L'\\';
#else
constexpr wchar_t kSeparator = L'/';
#endif

TEST(CrtPath, Splits)
{
    struct
    {
        const wchar_t *path, *drive, *directory, *name, *extension;
    } constexpr kCases[] = {{L"c:\\a\\b.txt", L"c:", L"\\a\\", L"b", L".txt"},
        {L"/a/b/c.d.e", L"", L"/a/b/", L"c.d", L".e"}, {L"a/b\\c", L"", L"a/b\\", L"c", L""},
        {L"\\\\srv\\share\\f.x", L"", L"\\\\srv\\share\\", L"f", L".x"}, {L"a.b/c", L"", L"a.b/", L"c", L""},
        {L"c:x", L"c:", L"", L"x", L""}, {L"cc:x", L"", L"", L"cc:x", L""}, {L"ab/:c", L"", L"ab/", L":c", L""},
        {L".ext", L"", L"", L"", L".ext"}, {L"a/..", L"", L"a/", L".", L"."}, {L"", L"", L"", L"", L""}};
    for (const auto& c : kCases)
    {
        wchar_t drive[3], directory[256], name[256], extension[256];
        EXPECT_EQ(_wsplitpath_s(c.path, drive, 3, directory, 256, name, 256, extension, 256), 0);
        EXPECT_STREQ(drive, c.drive) << c.path;
        EXPECT_STREQ(directory, c.directory) << c.path;
        EXPECT_STREQ(name, c.name) << c.path;
        EXPECT_STREQ(extension, c.extension) << c.path;
    }
}

TEST(CrtPath, SplitsIntoRoomThatFits)
{
    struct
    {
        std::size_t drive, directory, name, extension;
        int result;
    } constexpr kCases[] = {{3, 5, 3, 4, 0}, {2, 5, 3, 4, ERANGE}, {3, 4, 3, 4, ERANGE}, {3, 5, 2, 4, ERANGE},
        {3, 5, 3, 3, ERANGE}, {0, 5, 3, 4, EINVAL}};
    constexpr wchar_t kPath[] = L"c:\\ab\\cd.ef";
    for (const auto& c : kCases)
    {
        wchar_t drive[3] = L"", directory[5] = L"", name[3] = L"", extension[4] = L"";
        errno = 0;
        EXPECT_EQ(_wsplitpath_s(kPath, drive, c.drive, directory, c.directory, name, c.name, extension, c.extension),
            c.result);
        EXPECT_EQ(errno, c.result);
        EXPECT_STREQ(drive, c.result == 0 ? L"c:" : L"");
        EXPECT_STREQ(directory, c.result == 0 ? L"\\ab\\" : L"");
        EXPECT_STREQ(name, c.result == 0 ? L"cd" : L"");
        EXPECT_STREQ(extension, c.result == 0 ? L".ef" : L"");
    }
    wchar_t name[3];
    EXPECT_EQ(_wsplitpath_s(kPath, nullptr, 0, nullptr, 0, name, 3, nullptr, 0), 0);
    EXPECT_STREQ(name, L"cd");
    EXPECT_EQ(_wsplitpath_s(kPath, nullptr, 3, nullptr, 0, name, 3, nullptr, 0), EINVAL);
    EXPECT_EQ(_wsplitpath_s(nullptr, nullptr, 0, nullptr, 0, name, 3, nullptr, 0), EINVAL);
}

TEST(CrtPath, Makes)
{
    struct
    {
        const wchar_t *drive, *directory, *name, *extension;
        const wchar_t* expected; // with `|` in place of an added separator
    } constexpr kCases[] = {{L"c", L"a", L"b", L"t", L"c:a|b.t"}, {L"cde", L"x/", L"y", L".z", L"c:x/y.z"},
        {L"", L"", L"b", L"", L"b"}, {nullptr, L"\\", L"b", L".", L"\\b."}, {nullptr, L"a", L"", L"t", L"a|.t"},
        {nullptr, nullptr, nullptr, nullptr, L""}};
    for (const auto& c : kCases)
    {
        wchar_t expected[20];
        wcscpy(expected, c.expected);
        if (wchar_t* added = wcschr(expected, L'|'))
            *added = kSeparator;
        wchar_t path[20];
        const std::size_t length = wcslen(expected);
        EXPECT_EQ(_wmakepath_s(path, length + 1, c.drive, c.directory, c.name, c.extension), 0);
        EXPECT_STREQ(path, expected);
        for (std::size_t size = 1; size <= length; ++size)
        {
            errno = 0;
            path[size] = L'~';
            EXPECT_EQ(_wmakepath_s(path, size, c.drive, c.directory, c.name, c.extension), ERANGE);
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
