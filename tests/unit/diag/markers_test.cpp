// Markers: when they are written, and each event byte by byte.
#include "diag/marker_series.h"
#include "module/module_paths.h"
#include "support/debug_lines.h"
#include "support/fake_tracing.h"
#include "support/record_bytes.h"
#include "support/run_in_threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <set>
#include <tuple>

using namespace qx;
using namespace qxtest;
using namespace std::string_literals;
using testing::ElementsAre;
using Series = clsConcurrencyVisualizerMarkerSeries;
using Span = clsConcurrencyVisualizerSpan;

namespace
{

struct MarkerUser : clsConcurrencyVisualizerUser
{
    using clsConcurrencyVisualizerUser::AreMarkersActive;
};

auto Fields(const EVENT_DESCRIPTOR& d)
{
    return std::tuple(+d.Id, +d.Version, +d.Channel, +d.Level, +d.Opcode, +d.Task, d.Keyword);
}

// The file has the manifest's lines.
std::string ExpectedManifest()
{
    std::ifstream file(QXUT_TEST_DATA "/markers/manifest.xml");
    std::string text;
    for (std::string line; std::getline(file, line);)
        text += (text.empty() ? "" : "\r\n") + line;
    return text + " ";
}

TEST(Markers, TheSettingAndTheSessionDecide)
{
    const struct
    {
        const wchar_t* value;
        bool isListening;
        std::size_t registered;
        bool isActive;
    } kCases[] = {{nullptr, true, 0, false}, {L"true", true, 0, false}, {L"1", true, 0, false}, {L"", true, 0, false},
        {L"True", true, 1, true}, {L"Txyz", true, 1, true}, {L"True", false, 1, false}};
    for (const auto& expected : kCases)
    {
        FakeTracing tracing(expected.isListening, expected.value);
        {
            const MarkerUser first, second; // share the root
            EXPECT_EQ(tracing.Registered(), expected.registered);
            EXPECT_EQ(first.AreMarkersActive(), expected.isActive);
            if (expected.registered != 0) // a session that begins later doesn't count, for old users and new ones
                tracing.Listen(true);
            EXPECT_EQ(MarkerUser().AreMarkersActive(), expected.isActive);
            EXPECT_EQ(second.AreMarkersActive(), expected.isActive);
        }
        EXPECT_EQ(tracing.Registered(), 0u);
        EXPECT_EQ(MarkerUser().AreMarkersActive(), expected.registered != 0); // a new root
    }
}

TEST(Markers, EachEventByteByByte)
{
    FakeTracing tracing;
    Series series(L"L\u00e4ne");
    EXPECT_EQ(series.WriteMessage(3, L"%d %s", 42, L"ok"), 0);
    {
        const Span span(&series, L"");
    }
    const auto events = tracing.Events();
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(Fields(events[0].descriptor), std::tuple(0xFFFE, 1, 0, 0, 0xFE, 0, ~0ULL));
    EXPECT_THAT(events[0].pieces, ElementsAre("\x01\x01\x00\x5B\x01\x00\x00\x00"s, ExpectedManifest()));
    const std::string name = BytesOfRecord(L"L\u00e4ne"), zero(1, '\0');
    EXPECT_EQ(Fields(events[1].descriptor), std::tuple(4, 1, 0x10, 3, 0, 3, 0x8000000000000001ULL));
    EXPECT_THAT(events[1].pieces, ElementsAre("\x04", "\x03", zero, name, BytesOfRecord(L"42 ok"), zero));
    const std::string id = BytesOfRecord(0x80000001u);
    EXPECT_EQ(Fields(events[2].descriptor), std::tuple(1, 1, 0x10, 4, 1, 1, 0x8000000000000002ULL));
    EXPECT_THAT(events[2].pieces, ElementsAre("\x01", "\x04", "\x01", id, name, BytesOfRecord(L""), zero));
    EXPECT_EQ(Fields(events[3].descriptor), std::tuple(2, 1, 0x10, 4, 2, 1, 0x8000000000000002ULL));
    EXPECT_THAT(events[3].pieces, ElementsAre("\x02", "\x04", "\x01", id, name, BytesOfRecord(L""), zero));
}

TEST(Markers, NestedSpansHaveLanesOfTheirOwn)
{
    FakeTracing tracing;
    Series series(L"s");
    for (int round = 1; round <= 2; ++round)
    {
        const Span first(&series, L"%d", round);
        const Span second(&series, L"b");
        const Span third(&series, L"c");
    }
    const auto lines = tracing.Lines();
    ASSERT_EQ(lines.size(), 12u);
    EXPECT_THAT(std::vector(lines.begin(), lines.begin() + 7),
        ElementsAre("> s: 1", "> s/1: b", "> s/2: c", "< s/2", "< s/1", "< s", "> s: 2"));
    EXPECT_EQ(tracing.registrations, 1u); // children share the provider
    EXPECT_EQ(std::ranges::count(tracing.Events(), 0xFFFE, [](const auto& event) { return +event.descriptor.Id; }), 1);
}

TEST(Markers, SpanIdsBeginAgainAfterTheLast)
{
    FakeTracing tracing;
    Series series(L"s");
    series.Record().provider->lastSpanId = INT32_MAX - 1;
    for (int count = 0; count < 2; ++count)
        const Span span(&series, L"");
    const auto events = tracing.Events();
    EXPECT_EQ(events.at(1).pieces.at(3), BytesOfRecord(INT32_MAX));
    EXPECT_EQ(events.at(3).pieces.at(3), BytesOfRecord(0x80000001u));
}

TEST(Markers, LengthsOfTextsAndNames)
{
    FakeTracing tracing;
    const DebugLines lines;
    Series series(L"s");
    for (const unsigned length : {63u, 64u, 8'192u})
    {
        String text;
        text.Fill(L'x', length);
        for (const wchar_t* const format : {L"%s", L"%s%s"}) // the first one isn't formatted
        {
            const std::size_t before = tracing.Events().size();
            EXPECT_EQ(series.WriteMessage(1, format, text.Text(), L""), 0);
            EXPECT_GT(tracing.Events().size(), before);
            EXPECT_EQ(tracing.Events().back().Text(4), text.View()) << length;
        }
    }
    const std::size_t before = tracing.Events().size();
    String text;
    text.Fill(L'x', 8'193);
    for (const wchar_t* const format : {L"%s", L"%s%s"})
        EXPECT_EQ(series.WriteMessage(1, format, text.Text(), L""), static_cast<std::int32_t>(0x8007007A));
    {
        const Span span(&series, L"%s", text.Text());
    }
    EXPECT_EQ(tracing.Events().size(), before);
    EXPECT_EQ(lines.Count(), 0u);

    text.Fill(L'n', 32);
    Series longest(text);
    EXPECT_TRUE(longest.HasRecord());
    const Span outer(&longest, L"outer"), inner(&longest, L"inner"); // the child's name is too long
    EXPECT_EQ(lines.Only(), L"ERROR creating Marker Series '" + text + L"/1'");
    EXPECT_EQ(tracing.Lines().back(), "> " + std::string(32, 'n') + ": outer");
    text.Append(L'n');
    Series tooLong(text);
    EXPECT_FALSE(tooLong.HasRecord());
    EXPECT_EQ(tooLong.WriteMessage(1, L"x"), 0);
    EXPECT_EQ(lines.Last(), L"ERROR creating Marker Series '" + text + L"'");
}

TEST(Markers, WhichMessagesASessionGets)
{
    constexpr ULONGLONG kOwn = 0x8000000000000001;
    const struct
    {
        UCHAR level;
        ULONGLONG any, all;
        bool isWritten;
    } kCases[] = {{0, kOwn, 0, true}, {4, kOwn, 0, true}, {3, kOwn, 0, false}, {0, 1, 0, true}, {0, 2, 0, false},
        {0, 0, 0, false}, {0, kOwn, kOwn, true}, {0, kOwn, 3, false}};
    FakeTracing tracing;
    Series series(L"s");
    for (const auto& expected : kCases)
    {
        tracing.Listen(true, expected.level, expected.any, expected.all);
        const std::size_t before = tracing.Lines().size();
        EXPECT_EQ(series.WriteMessage(4, L"m"), 0);
        EXPECT_EQ(tracing.Lines().size() - before, expected.isWritten);
    }
    tracing.Listen(false);
    const std::size_t before = tracing.Events().size();
    series.WriteMessage(0, L"m");
    {
        const Span outer(&series, L"counts as a level");
        tracing.Listen(true);
        const Span inner(&series, L"i");
        tracing.Listen(false);
    }
    ASSERT_EQ(tracing.Events().size(), before + 1);
    EXPECT_EQ(tracing.Lines().back(), "> s/1: i"); // without its end
}

TEST(Markers, FailuresOfTheSystem)
{
    for (const char* const missing : {"EventRegister", "EventWrite", ""})
    {
        FakeTracing tracing;
        const DebugLines lines;
        tracing.missing = missing;
        tracing.registerResult = *missing ? 0 : 8;
        Series series(L"s");
        const bool isRegistered = missing != "EventRegister"s && *missing;
        EXPECT_EQ(series.HasRecord(), isRegistered) << missing;
        EXPECT_EQ(lines.CountOf(L"ERROR initializing Marker Provider"), isRegistered ? 0u : 1u);
        const bool fails = missing == "EventWrite"s;
        EXPECT_EQ(series.WriteMessage(1, L"m"), fails ? static_cast<std::int32_t>(0x80070001) : 0);
    }
    FakeTracing tracing;
    Series series(L"s");
    tracing.writeResult = 0x1000E; // only the low 16 bits count
    EXPECT_EQ(series.WriteMessage(1, L"m"), static_cast<std::int32_t>(0x8007000E));
    {
        const Span span(&series, L"x");
    }
    EXPECT_THAT(tracing.Lines(), ElementsAre("- s: m", "> s: x")); // a span whose beginning failed has no end
}

// A session comes and goes while several threads write on one series. Each thread's spans are nested properly.
TEST(Markers, ManyThreadsOnOneSeries)
{
    FakeTracing tracing;
    Series series(L"s");
    std::atomic<bool> isDone = false;
    std::jthread session(
        [&]
        {
            while (!isDone)
                for (const bool isListening : {false, true})
                    tracing.Listen(isListening);
        });
    const auto write = [&](unsigned)
    {
        for (int round = 0; round < 300; ++round)
        {
            const Span outer(&series, L"o");
            const Span inner(&series, L"i");
            series.WriteMessage(1, L"m");
        }
    };
    do // on a busy machine, nobody may listen during a whole run
        RunInThreads(4, write);
    while (tracing.Events().empty());
    isDone = true;
    session.join();
    std::set<std::string> ids;
    std::map<std::pair<DWORD, std::wstring_view>, std::string> open; // one span at most on each thread's lane
    const auto events = tracing.Events();
    for (const auto& event : events)
    {
        if (event.descriptor.Id == 1)
        {
            EXPECT_TRUE(ids.insert(event.pieces[3]).second);
            EXPECT_EQ(event.Text(4), event.Text(5) == L"o" ? L"s" : L"s/1");
            open[{event.threadId, event.Text(4)}] = event.pieces[3];
        }
        else if (event.descriptor.Id == 2)
        {
            EXPECT_EQ((open[{event.threadId, event.Text(4)}]), event.pieces[3]);
        }
    }
}

} // namespace
