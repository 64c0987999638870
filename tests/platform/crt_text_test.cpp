#include <gtest/gtest.h>

#include <string.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <cstring>
#include <tuple>
#include <vector>

#if defined(_WIN32) // each system has its own call to protect a page, and the layer has none
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace
{

constexpr std::size_t kHuge = 0x7FFFFFFE;

// Memory followed by an inaccessible page, so that reading past the end crashes the program.
class PageEnd
{
public:
    // Copies the characters so that the last one is directly before the inaccessible page.
    wchar_t* Place(const std::vector<wchar_t>& text) const
    {
        const std::size_t bytes = text.size() * sizeof(wchar_t);
        return static_cast<wchar_t*>(std::memcpy(_memory + kPageSize - bytes, text.data(), bytes));
    }

private:
    static constexpr std::size_t kPageSize = 4096;

    static char* Make()
    {
#if defined(_WIN32) // each system has its own calls
        void* const memory = VirtualAlloc(nullptr, 2 * kPageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        DWORD before = 0;
        VirtualProtect(static_cast<char*>(memory) + kPageSize, kPageSize, PAGE_NOACCESS, &before);
#else
        void* const memory = mmap(nullptr, 2 * kPageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        mprotect(static_cast<char*>(memory) + kPageSize, kPageSize, PROT_NONE);
#endif
        return static_cast<char*>(memory);
    }

    char* const _memory = Make(); // allocated until the process ends
};

// Returns a text of `length` characters with its terminator. No character occurs twice.
std::vector<wchar_t> Distinct(std::size_t length)
{
    std::vector<wchar_t> text(length + 1);
    for (std::size_t i = 0; i < length; ++i)
        text[i] = static_cast<wchar_t>(0xFF01 + i);
    return text;
}

TEST(CrtText, FindsAtEveryAlignmentWithoutReadingBehindTheEnd)
{
    PageEnd page;
    for (std::size_t length = 0; length < 40; ++length)
    {
        wchar_t* text = page.Place(Distinct(length));
        SCOPED_TRACE(length);

        EXPECT_EQ(wcslen(text), length);
        EXPECT_EQ(wcsnlen(text, kHuge), length);
        EXPECT_EQ(wcschr(text, 0), text + length);
        EXPECT_EQ(wcsrchr(text, 0), text + length);
        EXPECT_EQ(wcschr(text, L'x'), nullptr);
        EXPECT_EQ(wcsrchr(text, L'x'), nullptr);
        EXPECT_EQ(wmemchr(text, L'x', length + 1), nullptr);
        for (std::size_t i = 0; i < length; ++i)
        {
            EXPECT_EQ(wcsnlen(text, i), i);
            EXPECT_EQ(wcschr(text, text[i]), text + i);
            EXPECT_EQ(wcsrchr(text, text[i]), text + i);
            EXPECT_EQ(wmemchr(text, text[i], length), text + i);
            EXPECT_EQ(wmemchr(text, text[i], i), nullptr);
            EXPECT_EQ(wcsstr(text, text + i), text + i);
            EXPECT_EQ(wcslen(text + i), length - i);
        }
    }
}

TEST(CrtText, ComparesAtEveryAlignmentByUnsignedUnits)
{
    PageEnd pageA, pageB;
    for (std::size_t length = 1; length < 40; ++length)
        for (std::size_t at = 0; at < length; ++at)
        {
            std::vector<wchar_t> source = Distinct(length);
            const wchar_t *a = pageA.Place(source), *b = pageB.Place(source);
            ASSERT_EQ(wcscmp(a, b), 0);
            ASSERT_EQ(wcsncmp(a, b, kHuge), 0);
            ASSERT_EQ(_wcsicmp(a, b), 0);

            source[at] = L'B'; // less than any other unit in the text
            b = pageB.Place(source);
            ASSERT_GT(wcscmp(a, b), 0) << length << " " << at;
            ASSERT_LT(wcsncmp(b, a, kHuge), 0);
            ASSERT_EQ(wcsncmp(a, b, at), 0);
            ASSERT_GT(wcsncmp(a, b, at + 1), 0);
            ASSERT_GT(wmemcmp(a, b, length), 0);
            ASSERT_EQ(wmemcmp(a, b, at), 0);

            source[at] = L'b';
            a = pageA.Place(source);
            ASSERT_GT(wcscmp(a, b), 0);
            ASSERT_EQ(_wcsicmp(a, b), 0);
            ASSERT_EQ(_wcsnicmp(a, b, kHuge), 0);

            source[at] = 0; // the shorter text is less
            a = pageA.Place(source);
            ASSERT_LT(wcscmp(a, b), 0);
            ASSERT_GT(_wcsnicmp(b, a, kHuge), 0);
            ASSERT_LT(wmemcmp(a, b, length), 0);
        }
}

TEST(CrtText, FoldsNothingButAToZAndKnowsAllBlanks)
{
    constexpr std::tuple<const wchar_t*, const wchar_t*, int> kCases[] = {{L"azAZ@[`{", L"AZaz@[`{", 0},
        {L"[", L"{", -1}, {L"@", L"`", -1}, {L"_", L"a", -1}, {L"\u00c4", L"\u00e4", -1}, {L"\u212a", L"k", 1},
        {L"0123456789", L"0123456789A", -1},
        {L"abcdefghijklmnopqrstuvwxyz\u8000", L"ABCDEFGHIJKLMNOPQRSTUVWXYZ\u7fff", 1}};
    for (const auto& [a, b, order] : kCases)
    {
        EXPECT_EQ(std::clamp(_wcsicmp(a, b), -1, 1), order) << a;
        EXPECT_EQ(std::clamp(_wcsicmp(b, a), -1, 1), -order) << a;
        EXPECT_EQ(std::clamp(_wcsnicmp(a, b, 100), -1, 1), order) << a;
    }
    EXPECT_EQ(_wcsnicmp(L"NAME=1", L"name=2", 5), 0);
    std::vector<unsigned> blanks;
    for (unsigned c = 0; c < 0x10000; ++c)
    {
        const auto unit = static_cast<wint_t>(c);
        if (iswspace(unit))
            blanks.push_back(c);
        ASSERT_EQ(towlower(unit), c >= 'A' && c <= 'Z' ? unit + 32 : unit);
        ASSERT_EQ(towupper(unit), c >= 'a' && c <= 'z' ? unit - 32 : unit);
    }
    const std::vector<unsigned> ofAllScripts = {9, 10, 11, 12, 13, 0x20, 0xa0, 0x1680, 0x2000, 0x2001, 0x2002, 0x2003,
        0x2004, 0x2005, 0x2006, 0x2007, 0x2008, 0x2009, 0x200a, 0x2028, 0x2029, 0x202f, 0x205f, 0x3000};
    EXPECT_EQ(blanks, ofAllScripts);
}

TEST(CrtText, FindsPartsAndCopies)
{
    const wchar_t text[] = L"a/b/a/bc;d";
    EXPECT_EQ(wcsstr(text, L""), text);
    EXPECT_EQ(wcsstr(text, L"a/bc"), text + 4);
    EXPECT_EQ(wcsstr(text, L"d;"), nullptr);
    EXPECT_EQ(wcsspn(text, L"/ab"), 7u);

    wchar_t buffer[16];
    wmemset(buffer, L'#', 16);
    wcsncpy(buffer, L"abc", 6);
    EXPECT_EQ(wmemcmp(buffer, L"abc\0\0\0#", 7), 0) << "filled up with zeros";
    wcsncpy(buffer, L"wxyz", 3);
    EXPECT_EQ(wmemcmp(buffer, L"wxy\0", 4), 0) << "cut without a terminator";
    wmemmove(buffer + 1, buffer, 4);
    EXPECT_STREQ(buffer, L"wwxy");
}

} // namespace
