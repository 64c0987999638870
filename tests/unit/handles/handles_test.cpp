#include "handles/handle_lists.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/run_in_threads.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

using enum HandleOperation;

std::vector<std::string> Texts(const DebugLines& lines)
{
    constexpr const char* kMarks[] = {"<", "", ">"};
    std::vector<std::string> texts;
    for (const DebugLines::Entry& entry : lines.Entries())
        texts.push_back(kMarks[entry.indentChange + 1] + std::string(entry.text.NarrowText()));
    return texts;
}

using Lines = std::vector<std::string>;

std::string Line(const wchar_t* format, HandleValue handle)
{
    return std::string(String(String::kFormatted, format, reinterpret_cast<const void*>(handle)).NarrowText());
}

} // namespace

TEST(HandleLists, CountAdditionsAndRemovals)
{
    for (const std::int32_t kind : {1, 6, -5, 0, 14, 15, 4000, 65'535})
    {
        EXPECT_EQ(ManageHandles(kind, Count, 7), 0u) << kind;
        for (const HandleValue handle : {7, 7, 8})
            EXPECT_EQ(ManageHandles(kind, Add, handle), 0u);
        EXPECT_EQ(ManageHandles(kind, Count, 0), 2u);
        ManageHandles(kind, Remove, 7);
        ManageHandles(kind, Remove, 9);
        EXPECT_EQ(ManageHandles(kind, Contains, 7), 1u) << "added twice";
        ManageHandles(kind, Remove, 7);
        EXPECT_EQ(ManageHandles(kind, Contains, 7), 0u);
        EXPECT_EQ(ManageHandles(kind, Contains, 8), 1u);
        ManageHandles(kind, Remove, 8);
    }
    for (const std::int32_t kind : {65'536, INT32_MAX})
    {
        ManageHandles(kind, Add, 7);
        EXPECT_EQ(ManageHandles(kind, Count, 0), 0u);
    }
    for (const std::int32_t operation : {5, 9, 12, -1, INT32_MAX, INT32_MIN})
        EXPECT_EQ(ManageHandles(1, static_cast<HandleOperation>(operation), 7), 0u);
}

TEST(HandleLists, ComparisonsOfSnapshots)
{
    const DebugLines lines;
    ManageHandles(6, Add, 0x60);
    ManageHandles(6, TakeSnapshot, 0);
    ManageHandles(6, Compare, 0);
    EXPECT_EQ(lines.Count(), 0u) << "one snapshot stays";
    ManageHandles(6, Remove, 0x60);
    const HandleValue high = ~HandleValue{0};
    for (const HandleValue handle : {high, HandleValue{0x62}, HandleValue{0x61}, HandleValue{0x61}})
        ManageHandles(6, Add, handle);
    ManageHandles(6, TakeSnapshot, 0);
    ManageHandles(6, Compare, 0);
    EXPECT_EQ(Texts(lines), (Lines{">NEW 3 FONT HANDLES:", "<", ">DELETED 1 FONT HANDLES:", "<",
                                ">NEW 3 FONT HANDLES:", Line(L"NEW FONT HANDLE %#p", 0x61),
                                Line(L"NEW FONT HANDLE %#p", 0x62), Line(L"NEW FONT HANDLE %#p", high), "<",
                                ">DELETED 1 FONT HANDLES:", Line(L"DELETED FONT HANDLE %#p", 0x60), "<"}));
    ManageHandles(6, Compare, 0);
    EXPECT_EQ(lines.Count(), 12u) << "both snapshots are gone, without a report";
    for (const HandleValue handle : {high, HandleValue{0x62}, HandleValue{0x61}, HandleValue{0x61}})
        ManageHandles(6, Remove, handle);
}

TEST(HandleLists, LostHandlesAreReported)
{
    const UserIs user(L"nobody");
    const DebugLines lines;
    ManageHandles(4, Add, 0x40);
    ManageHandles(2, Add, 0x20);
    const std::string nameless = Line(L"LOST  HANDLE %#p:", 0x40);
    ManageHandles(4, Report, 0);
    ManageHandles(4, Report, 0);
    EXPECT_EQ(Texts(lines), (Lines{nameless, nameless})) << "as often as asked";
    ReportLostHandles();
    ReportLostHandles();
    EXPECT_EQ(Texts(lines), (Lines{nameless, nameless, Line(L"LOST BRUSH HANDLE %#p:", 0x20)}));
    ManageHandles(4, Remove, 0x40);
    ManageHandles(2, Remove, 0x20);
}

// Reports that show the names of callers are covered by a test of the exports.
TEST(HandleLists, DevelopersSeeAddressesWhileSomebodyElseHasTheSession)
{
    const UserIs user(L"qvx");
    TheDebugHelpTimes().lock = 50;
    const clsDBGHelpWrapperGPFProt other;
    ManageHandles(3, Add, 0x30);
    const DebugLines lines;
    ManageHandles(3, Report, 0);
    EXPECT_EQ(lines.CountOf(L"LOST DC HANDLE"), 1u);
    EXPECT_GT(lines.CountOf(L"  0"), 2u);
    EXPECT_EQ(lines.CountOf(L"["), 0u);
    TheDebugHelpTimes() = DebugHelpTimes();
    ManageHandles(3, Remove, 0x30);
}

TEST(HandleLists, ManyThreads)
{
    RunInThreads(8,
        [](unsigned number)
        {
            const HandleValue thread = number + 1;
            for (HandleValue i = 0; i < 500; ++i)
            {
                const auto kind = static_cast<std::int32_t>(20 + i);
                ManageHandles(kind, Add, thread);
                ManageHandles(7, Add, thread << 32 | i);
                ManageHandles(7, TakeSnapshot, 0);
                ManageHandles(7, i % 2 == 0 ? Contains : Compare, i);
                ManageHandles(kind, Remove, thread);
                ManageHandles(7, Remove, thread << 32 | i);
            }
        });
    EXPECT_EQ(ManageHandles(7, Count, 0), 0u);
    EXPECT_EQ(ManageHandles(400, Count, 0), 0u);
}
