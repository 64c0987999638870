// Live objects, grouped by call chain.
#include "exports/heaps/heaps_library.h"

#include "core/text/string.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

using namespace qxtest;

namespace
{

const HeapsLibrary& leaking = HeapsLibrary::Get();

struct Group
{
    QxHeapLeak leak;
    std::vector<const void*> addresses;
    std::vector<std::string> lines;
};

struct Received
{
    std::vector<Group> groups;
    HUTHEAP used = nullptr; // the callback uses this heap
};

void Receive(void* user, const QxHeapLeak* leak)
{
    auto& received = *static_cast<Received*>(user);
    Group group{*leak, std::vector<const void*>(leak->addresses, leak->addresses + leak->addressCount), {}};
    for (std::uint32_t i = 0; i < leak->lineCount; ++i)
        group.lines.emplace_back(qx::String(leak->lines[i]).NarrowText());
    received.groups.push_back(group);
    EXPECT_TRUE(received.used == nullptr || leaking.free(received.used, leaking.alloc(received.used, 100, 0)) == 0);
}

Received Leaks(HUTHEAPJOB job, HUTHEAP heap, std::int32_t expectedResult, std::uint32_t mostGroups = 0)
{
    Received received{{}, heap};
    EXPECT_EQ(leaking.leaks(job, heap, mostGroups, Receive, &received), expectedResult);
    return received;
}

} // namespace

extern "C" [[gnu::noinline]] void* AllocateFew(HUTHEAP heap, std::uint32_t tag)
{
    void* const object = leaking.allocExt(heap, 700, 0, nullptr, tag);
    WordAt(object, 0) = 1; // prevents a tail call above
    return object;
}

extern "C" [[gnu::noinline]] void* AllocateMany(HUTHEAP heap)
{
    void* const object = leaking.alloc(heap, 10, 0);
    WordAt(object, 0) = 1;
    return object;
}

TEST(HeapsLeaks, GroupsByChainWithNames)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    const auto second = leaking.create(own.job, L"second", QXUT_HEAP_DEBUG);
    const auto third = leaking.create(own.job, L"third", 0);
    std::vector<void*> few, many;
    for (std::uint32_t i = 0; i < 2; ++i)
        few.push_back(AllocateFew(i == 0 ? own.heap : second, 0x77));
    for (int i = 0; i < 20; ++i)
        many.push_back(AllocateMany(own.heap));
    leaking.free(own.heap, AllocateMany(own.heap)); // not live
    void* const plain = leaking.alloc(third, 5, 0);
    WordAt(few[0], -28) -= 5'000'000; // changes the allocation times
    WordAt(few[1], -28) -= 3;
    WordAt(many[3], -20) += 8; // the chain of a damaged header refers to no record

    const Received all = Leaks(own.job, nullptr, 3);
    ASSERT_EQ(all.groups.size(), 3u);
    const Group& first = all.groups[0];
    EXPECT_EQ(first.leak.size, sizeof(QxHeapLeak));
    EXPECT_EQ(first.leak.objectCount, 2u);
    EXPECT_EQ(first.leak.byteCount, 1'400u);
    EXPECT_EQ(first.leak.tag, 0x77u);
    EXPECT_EQ(first.leak.firstTick, WordAt(few[0], -28));
    EXPECT_EQ(first.leak.lastTick, WordAt(few[1], -28));
    EXPECT_TRUE(std::is_permutation(first.addresses.begin(), first.addresses.end(), few.begin(), few.end()));
    ASSERT_GE(first.lines.size(), 2u);
    EXPECT_NE(first.lines[0].find("exports_heaps_test!AllocateFew + 0x"), std::string::npos) << first.lines[0];
    EXPECT_NE(first.lines[0].find("heaps_leaks_test.cpp, line "), std::string::npos) << first.lines[0];
    EXPECT_NE(first.lines[1].find("GroupsByChainWithNames"), std::string::npos) << first.lines[1];

    const Group& next = all.groups[1];
    EXPECT_EQ(next.leak.objectCount, 19u);
    EXPECT_EQ(next.leak.byteCount, 190u);
    EXPECT_EQ(next.addresses.size(), QXUT_HEAPLEAK_MOST_ADDRESSES);
    for (const void* const object : next.addresses)
        EXPECT_EQ(std::count(many.begin(), many.end(), object), 1);
    ASSERT_FALSE(next.lines.empty());
    EXPECT_NE(next.lines[0].find("AllocateMany"), std::string::npos) << next.lines[0];

    const Group& withoutChain = all.groups[2];
    EXPECT_EQ(withoutChain.leak.objectCount, 2u);
    EXPECT_EQ(withoutChain.leak.byteCount, 15u);
    EXPECT_EQ(withoutChain.leak.lineCount, 0u);
    EXPECT_EQ(std::count(withoutChain.addresses.begin(), withoutChain.addresses.end(), plain), 1);
    WordAt(many[3], -20) -= 8;
}

// These groups have no call chains, so no debug-help session is opened.
TEST(HeapsLeaks, HandlesAndLimits)
{
    const JobAndHeap own(0);
    const auto other = leaking.jobOpen(L"other", 0);
    const auto heap = leaking.create(other, L"heap", 0);
    EXPECT_TRUE(Leaks(own.job, own.heap, 0).groups.empty());
    leaking.alloc(own.heap, 30, 0);
    leaking.alloc(heap, 60, 0);
    EXPECT_EQ(Leaks(nullptr, own.heap, 1).groups.at(0).leak.byteCount, 30u);
    EXPECT_EQ(Leaks(own.job, nullptr, 1).groups.at(0).leak.byteCount, 30u);
    EXPECT_EQ(Leaks(nullptr, nullptr, 1).groups.at(0).leak.byteCount, 90u);
    Received none;
    EXPECT_EQ(leaking.leaks(other, own.heap, 0, Receive, &none), QXUT_HEAP_FAILED); // the heap belongs to another job
    EXPECT_EQ(leaking.leaks(reinterpret_cast<HUTHEAPJOB>(16), nullptr, 0, Receive, &none), QXUT_HEAP_FAILED);
    EXPECT_EQ(leaking.leaks(nullptr, reinterpret_cast<HUTHEAP>(16), 0, Receive, &none), QXUT_HEAP_FAILED);
    EXPECT_EQ(leaking.leaks(nullptr, nullptr, 0, nullptr, nullptr), QXUT_HEAP_FAILED);
    EXPECT_TRUE(none.groups.empty());
    leaking.alloc(own.heap, 10, QXUT_OBJECT_DEBUG);
    EXPECT_EQ(Leaks(own.job, own.heap, 2, 1).groups.size(), 1u);
    EXPECT_EQ(leaking.jobClose(other), QXUT_HEAP_LEFT_OVER);
}
