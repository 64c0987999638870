#include "containers/dlist.h"
#include "containers/slist.h"
#include "containers/stack.h"
#include "containers/vector.h"

#include "counted.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <random>
#include <vector>

using namespace qx;
using testing::ElementsAre;

static_assert(std::forward_iterator<WCValSList<int>::iterator>);
static_assert(std::forward_iterator<WCValSList<int>::const_iterator>);

namespace
{

template <class List>
std::vector<int> Values(const List& list)
{
    std::vector<int> values;
    list.ForEach([&](const Counted& element) { values.push_back(element.Value()); });
    EXPECT_EQ(values.size(), list.Count());
    return values;
}

// What both lists promise alike.
template <class List>
class ListTest : public testing::Test
{
protected:
    ~ListTest() override { EXPECT_EQ(Counted::living, 0); }
};

using Lists = testing::Types<WCValSList<Counted>, WCValDList<Counted>>;
TYPED_TEST_SUITE(ListTest, Lists);

TYPED_TEST(ListTest, IndexesAreClipped)
{
    for (const auto& [index, taken] : {std::pair<std::ptrdiff_t, int>{-5, 0}, {0, 0}, {3, 3}, {4, 4}, {99, 4}})
    {
        TypeParam list{0, 1, 2, 3, 4};
        EXPECT_EQ(list.At(index)->Value(), taken);
        EXPECT_EQ(list.TakeAt(index)->Value(), taken) << index;
        EXPECT_EQ(list.IndexOf(taken), -1);
        list.Append(9); // the new last element must be in its place
        EXPECT_EQ(list.Last()->Value(), 9);
    }
    TypeParam empty;
    EXPECT_EQ(empty.At(0), nullptr);
    EXPECT_FALSE(empty.TakeAt(0).has_value());
}

TYPED_TEST(ListTest, RemovesTheFirstEqualOne)
{
    TypeParam list{1, 2, 3, 2, 1};
    EXPECT_EQ(list.IndexOf(2), 1);
    EXPECT_TRUE(list.Remove(2));
    EXPECT_THAT(Values(list), ElementsAre(1, 3, 2, 1));
    EXPECT_FALSE(list.Remove(7));
    list.Append(4);
    EXPECT_TRUE(list.Remove(*list.Last())); // by a reference into the list itself
    EXPECT_THAT(Values(list), ElementsAre(1, 3, 2, 1));
}

TYPED_TEST(ListTest, CopiesAreDeepAndMovesLeaveNothing)
{
    TypeParam source{1, 2, 3};
    TypeParam copy(source);
    *copy.First() = 9;
    EXPECT_THAT(Values(source), ElementsAre(1, 2, 3));
    TypeParam moved(std::move(source));
    EXPECT_TRUE(source.IsEmpty());
    source.Append(4); // a list that was moved from is a list like any other
    EXPECT_THAT(Values(source), ElementsAre(4));
    copy = std::move(moved);
    EXPECT_THAT(Values(copy), ElementsAre(1, 2, 3));
    TypeParam& self = copy;
    copy = self;
    source = copy;
    EXPECT_THAT(Values(source), ElementsAre(1, 2, 3));
}

TYPED_TEST(ListTest, FailedCopyLosesNothing)
{
    TypeParam source{1, 2, 3};
    TypeParam target{7};
    {
        FailingCopies failing(2);
        EXPECT_THROW(target = source, std::runtime_error);
        EXPECT_THROW(target.Append(Counted(1)), std::runtime_error);
        EXPECT_THROW(target.TakeAt(0), std::runtime_error);
    }
    EXPECT_THAT(Values(target), ElementsAre(7));
}

TYPED_TEST(ListTest, MatchesAVectorUnderRandomOperations)
{
    std::mt19937 random(23);
    TypeParam list;
    std::vector<int> model;
    for (int step = 0; step < 5000; ++step)
    {
        const int value = static_cast<int>(random() % 8);
        const auto index = static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
        switch (random() % 5)
        {
        case 0:
            list.InsertHead(value);
            model.insert(model.begin(), value);
            break;
        case 1:
        case 2:
            list.Append(value);
            model.push_back(value);
            break;
        case 3:
            if (const auto taken = list.TakeAt(index))
            {
                const auto at = model.begin() + std::min(index, std::ssize(model) - 1);
                ASSERT_EQ(taken->Value(), *at);
                model.erase(at);
            }
            break;
        default:
            ASSERT_EQ(list.RemoveIf([&](const Counted& c) { return c.Value() == value; }), std::erase(model, value));
        }
        ASSERT_EQ(Values(list), model);
        if constexpr (std::bidirectional_iterator<typename TypeParam::iterator>)
        {
            ASSERT_TRUE(std::equal(model.rbegin(), model.rend(), std::make_reverse_iterator(list.end()),
                [](int a, const Counted& b) { return a == b.Value(); }));
        }
    }
}

TEST(SListIteratorTest, VisitsWhatIsAppendedDuringTheWalk)
{
    WCValSList<int> list{1, 2};
    std::vector<int> visited;
    for (WCValSListIter it(list); it; ++it)
    {
        visited.push_back(*it);
        if (*it < 3)
            list.Append(*it + 2);
    }
    EXPECT_THAT(visited, ElementsAre(1, 2, 3, 4));
    EXPECT_FALSE(WCValSListIter(WCValSList<int>() = {}));
}

TEST(SListMoveTest, TakesTheNodeAlong)
{
    WCValSList<Counted> source{0, 1, 2};
    WCValSList<Counted> target;
    const Counted* const moved = source.At(1);
    EXPECT_EQ(source.MoveAt(1, target), moved);
    EXPECT_EQ(source.MoveAt(7, target)->Value(), 2); // clipped to the last
    EXPECT_EQ(source.MoveAt(0, target)->Value(), 0);
    EXPECT_EQ(source.MoveAt(0, target), nullptr);
    source.Append(3);
    target.Append(4);
    EXPECT_THAT(Values(source), ElementsAre(3));
    EXPECT_THAT(Values(target), ElementsAre(1, 2, 0, 4));
}

// A list that owns what its pointers point at and compares by what these hold.
class OwningList : public WCPtrSList<Counted>
{
public:
    ~OwningList() override { Clear(); }

protected:
    void ReleaseNode(Node* node) noexcept override
    {
        delete node->value;
        WCPtrSList<Counted>::ReleaseNode(node);
    }
    bool AreEqual(Counted* const& a, Counted* const& b) const override { return *a == *b; }
};

TEST(SListHookTest, DerivedListReleasesItsElementsAndDecidesEquality)
{
    {
        OwningList list;
        for (int i = 0; i < 5; ++i)
            list.Append(new Counted(i));
        Counted three(3);
        EXPECT_EQ(list.IndexOf(&three), 3);
        EXPECT_TRUE(list.Remove(&three));
        EXPECT_EQ(list.RemoveIf([](const Counted* c) { return c->Value() == 0; }), 1u);
        const std::unique_ptr<Counted> taken(*list.TakeAt(0)); // belongs to the taker
        EXPECT_EQ(taken->Value(), 1);
        EXPECT_EQ(Counted::living, 4);
    }
    EXPECT_EQ(Counted::living, 0);
}

struct CountingMemory
{
    static inline int blocks = 0;
    static void* Allocate(std::size_t bytes)
    {
        ++blocks;
        return WCHeap::Allocate(bytes);
    }
    static void Release(void* block) noexcept
    {
        blocks -= block != nullptr;
        WCHeap::Release(block);
    }
};

TEST(SListHookTest, NodesComeFromTheListsOwnMemory)
{
    {
        WCValSList<Counted, CountingMemory> list{1, 2};
        EXPECT_EQ(CountingMemory::blocks, 2);
        FailingCopies failing(0);
        EXPECT_THROW(list.Append(Counted(3)), std::runtime_error);
        EXPECT_EQ(CountingMemory::blocks, 2);
    }
    EXPECT_EQ(CountingMemory::blocks, 0);
}

TEST(StackTest, GivesTheNewestFirst)
{
    WCStack<int, WCValSList<int>> stack;
    EXPECT_EQ(stack.Top(), nullptr);
    EXPECT_FALSE(stack.Pop().has_value());
    for (int i = 1; i <= 3; ++i)
        stack.Push(i);
    EXPECT_THAT(std::vector<int>(stack.begin(), stack.end()), ElementsAre(3, 2, 1));
    EXPECT_EQ(stack.Pop(), 3);
    EXPECT_EQ(*stack.Top(), 2);
}

TEST(VectorTest, ResizeKeepsTheFirstAndMakesTheRest)
{
    {
        WCValVector<Counted> vector;
        vector[2] = 5; // grows
        vector.Resize(4);
        EXPECT_EQ(Counted::living, 4);
        EXPECT_EQ(vector[0].Value(), 0);
        EXPECT_EQ(vector[2].Value(), 5);
        EXPECT_EQ(vector[3].Value(), 0);
        vector.Resize(1);
        EXPECT_EQ(Counted::living, 1);
        EXPECT_EQ(vector.At(1), nullptr);
        vector[0] = 8;
        {
            FailingCopies failing(0);
            EXPECT_THROW(vector.Resize(10), std::runtime_error);
        }
        EXPECT_EQ(vector.Count(), 1u);
        WCValVector<Counted> moved(std::move(vector));
        EXPECT_TRUE(vector.IsEmpty());
        EXPECT_EQ(moved[0].Value(), 8);
    }
    EXPECT_EQ(Counted::living, 0);
    WCValVector<int> numbers;
    EXPECT_EQ(numbers[3], 0);
}

} // namespace
