#include "containers/dlist.h"
#include "containers/skip_list.h"
#include "containers/slist.h"
#include "containers/stack.h"
#include "containers/vector.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <tuple>
#include <vector>

using namespace qx;
using testing::ElementsAre;

static_assert(std::forward_iterator<WCValSList<int>::iterator>);
static_assert(std::forward_iterator<WCValSkipList<int>::const_iterator>);

namespace
{

// An element that counts the living objects of its kind and whose copies can be made to fail.
class Counted
{
public:
    static inline int living = 0;
    static inline int copiesUntilFailure = -1; // never

    Counted(int n = 0) : _value(n) { ++living; }
    Counted(const Counted& other) : _value(other._value)
    {
        if (copiesUntilFailure == 0)
            throw std::runtime_error("copy");
        if (copiesUntilFailure > 0)
            --copiesUntilFailure;
        ++living;
    }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --living; }

    int Value() const { return _value; }
    friend bool operator==(const Counted& a, const Counted& b) { return a._value == b._value; }
    friend bool operator<(const Counted& a, const Counted& b) { return a._value < b._value; }

private:
    int _value;
};

// Makes a copy fail after a number of successful ones, as long as this object exists.
class FailingCopies
{
public:
    explicit FailingCopies(int after) { Counted::copiesUntilFailure = after; }
    ~FailingCopies() { Counted::copiesUntilFailure = -1; }
};

template <class List>
std::vector<int> Values(const List& list)
{
    std::vector<int> values;
    list.ForEach([&](const Counted& element) { values.push_back(element.Value()); });
    EXPECT_EQ(values.size(), list.Count());
    return values;
}

// Expects each container to destroy its elements.
class Elements : public testing::Test
{
protected:
    ~Elements() override { EXPECT_EQ(Counted::living, 0); }
};

// Guarantees shared by both lists.
template <class List>
class ListTest : public Elements
{
};

using Lists = testing::Types<WCValSList<Counted>, WCValDList<Counted>>;
TYPED_TEST_SUITE(ListTest, Lists);

TYPED_TEST(ListTest, CopiesAreDeepAndMovesLeaveNothing)
{
    TypeParam source{1, 2, 3}, copy(source);
    *copy.First() = 9;
    EXPECT_THAT(Values(source), ElementsAre(1, 2, 3));
    TypeParam moved(std::move(source));
    EXPECT_TRUE(source.IsEmpty());
    source.Append(4); // a moved-from list is usable
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
    TypeParam source{1, 2, 3}, target{7};
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
        const auto index = static_cast<std::ptrdiff_t>(random() % (model.size() + 5)) - 2; // is clipped
        const auto found = std::find(model.begin(), model.end(), value);
        ASSERT_EQ(list.IndexOf(value), found == model.end() ? -1 : found - model.begin());
        switch (random() % 6)
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
            if (const Counted* const there = list.At(index))
            {
                const auto at = model.begin() + std::clamp<std::ptrdiff_t>(index, 0, std::ssize(model) - 1);
                ASSERT_EQ(there->Value(), *at);
                ASSERT_EQ(list.TakeAt(index)->Value(), *at);
                model.erase(at);
            }
            else
            {
                ASSERT_TRUE(model.empty() && !list.TakeAt(index).has_value());
            }
            break;
        case 4:
            if (found != model.end())
            {
                ASSERT_TRUE(list.Remove(*list.At(list.IndexOf(value)))); // by a reference into the list itself
                model.erase(found);
            }
            ASSERT_EQ(list.Remove(9), false);
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
    WCValSList<Counted> source{0, 1, 2}, target;
    const Counted* const moved = source.At(1);
    EXPECT_EQ(source.MoveAt(1, target), moved);
    EXPECT_EQ(source.MoveAt(7, target)->Value(), 2); // clipped to the last element
    EXPECT_EQ(source.MoveAt(0, target)->Value(), 0);
    EXPECT_EQ(source.MoveAt(0, target), nullptr);
    source.Append(3);
    target.Append(4);
    EXPECT_THAT(Values(source), ElementsAre(3));
    EXPECT_THAT(Values(target), ElementsAre(1, 2, 0, 4));
}

// A list that owns the objects its pointers refer to, and compares by their values.
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

TEST_F(Elements, AreReleasedAndComparedByADerivedList)
{
    OwningList list;
    for (int i = 0; i < 5; ++i)
        list.Append(new Counted(i));
    Counted three(3);
    EXPECT_EQ(list.IndexOf(&three), 3);
    EXPECT_TRUE(list.Remove(&three));
    EXPECT_EQ(list.RemoveIf([](const Counted* c) { return c->Value() == 0; }), 1u);
    const std::unique_ptr<Counted> taken(*list.TakeAt(0)); // now owned by the caller
    EXPECT_EQ(taken->Value(), 1);
    EXPECT_EQ(Counted::living, 4);
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

TEST_F(Elements, OfAVectorAreKeptOrMadeByItsSize)
{
    WCValVector<Counted> vector;
    vector[2] = 5; // grows
    vector.Resize(4);
    EXPECT_EQ(Counted::living, 4);
    EXPECT_EQ(std::tuple(vector[0].Value(), vector[2].Value(), vector[3].Value()), std::tuple(0, 5, 0));
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
    WCValVector<int> numbers;
    EXPECT_EQ(numbers[3], 0);
    EXPECT_THROW(numbers[SIZE_MAX], std::length_error);
    EXPECT_EQ(numbers.Count(), 4u);
}

// ---- Skip lists

TEST(LevelSourceTest, CountsPairsThatAreZeroUnderTheSelector)
{
    static std::vector<int> script;
    constexpr int kFirst = 0b00'00'10'00'01'00'00, kSecond = 0b11'11'11'11'11'11'00; // the last pair is drawn first
    // The random numbers that the source receives, and the draws: selector, highest level, expected result.
    const std::pair<std::vector<int>, std::vector<std::tuple<unsigned, int, int>>> cases[] = {
        {{kFirst, kSecond}, {{3, 19, 2}, {3, 19, 1}, {3, 19, 3}}}, // pairs: 0 0|1, 0|2, 0 0 and the next number's 0|3
        {{~0x3FFF, 0x3FFF}, {{3, 19, 7}}},                         // 14 bits of each number are used
        {{kFirst, kSecond}, {{1, 19, 2}, {1, 2, 2}, {1, 19, 0}}}}; // the second draw counts five zeros, clipped to 2
    for (const auto& [numbers, draws] : cases)
    {
        script.assign(numbers.rbegin(), numbers.rend());
        WCLevelSource source(
            []
            {
                const int next = script.back();
                script.pop_back();
                return next;
            });
        for (const auto& [selector, most, level] : draws)
            EXPECT_EQ(source.Draw(selector, most), level);
        EXPECT_TRUE(script.empty());
    }
}

TEST(SkipListTest, ParametersAreClipped)
{
    const std::tuple<unsigned, int, unsigned, int> cases[] = {
        {3, 8, 3, 8}, {1, 20, 1, 20}, {0, 0, 3, 1}, {2, -4, 3, 1}, {7, 21, 3, 20}};
    for (const auto& [selector, levels, expectedSelector, expectedLevels] : cases)
    {
        const WCValSkipList<int> list(selector, levels);
        EXPECT_EQ(list.Selector(), expectedSelector);
        EXPECT_EQ(list.MostLevels(), expectedLevels);
    }
}

TEST(SkipListTest, LevelsThinOutBySelector)
{
    // Selector, levels, and the share of a level's nodes that are promoted to the next level
    const std::tuple<unsigned, int, double> cases[] = {{3, 8, 0.25}, {1, 20, 0.5}, {3, 3, 0.25}};
    constexpr int kCount = 20000;
    for (const auto& [selector, levels, share] : cases)
    {
        std::srand(5);
        WCValSkipListSet<int> set(selector, levels);
        int top = set.LevelsInUse();
        for (int i = 0; i < kCount; ++i)
        {
            set.Insert(i * 7919 % 20011);
            ASSERT_LE(set.LevelsInUse(), top + 1);
            top = set.LevelsInUse();
        }
        EXPECT_LE(top, levels);
        // Five standard deviations of the binomial distribution, plus a margin for the first nodes, whose levels are
        // limited by the top level.
        double expected = kCount;
        for (int level = 0; level < top; ++level, expected *= share)
            EXPECT_NEAR(static_cast<double>(set.CountOnLevel(level)), expected, 5 * std::sqrt(expected) + 10) << level;
    }
}

TEST(SkipListTest, DuplicatesStayInTheOrderOfInsertion)
{
    struct Element
    {
        int key, mark;
        bool operator<(const Element& other) const { return key < other.key; }
    };
    WCValSkipList<Element> list(1, 8);
    for (int mark = 0; mark < 50; ++mark)
        list.Insert({mark % 5, mark});
    int before = -1;
    for (const Element& element : list)
    {
        EXPECT_LT(before, element.key * 100 + element.mark);
        before = element.key * 100 + element.mark;
    }
    EXPECT_TRUE(list.Remove({3, 0}));
    EXPECT_EQ(list.Find({3, 0})->mark, 8);
    EXPECT_EQ(list.Count(), 49u);
}

TEST_F(Elements, OfSkipListsMatchTheStandardContainersUnderRandomOperations)
{
    std::mt19937 random(42);
    WCValSkipList<Counted> list;
    WCValSkipListSet<Counted> set(1, 5);
    WCValSkipListDict<int, Counted> dict;
    std::multiset<int> listModel;
    std::set<int> setModel;
    std::map<int, int> dictModel;
    for (int step = 0; step < 20000; ++step)
    {
        const int value = static_cast<int>(random() % 200);
        if (random() % 2)
        {
            list.Insert(value);
            listModel.insert(value);
            ASSERT_EQ(set.Insert(value), setModel.insert(value).second);
            ASSERT_EQ(dict.Insert(value, step), dictModel.emplace(value, step).second);
        }
        else
        {
            const auto found = listModel.find(value);
            ASSERT_EQ(list.Remove(value), found != listModel.end());
            if (found != listModel.end())
                listModel.erase(found);
            ASSERT_EQ(set.Remove(value), setModel.erase(value) == 1);
            ASSERT_EQ(dict.Remove(value), dictModel.erase(value) == 1);
        }
        ASSERT_EQ(list.Contains(value), listModel.contains(value));
        ASSERT_EQ(set.Contains(value), setModel.contains(value));
        ASSERT_EQ(dict.Contains(value), dictModel.contains(value));
    }
    const auto equal = [](const Counted& a, int b)
    {
        return a.Value() == b;
    };
    EXPECT_TRUE(std::equal(list.begin(), list.end(), listModel.begin(), listModel.end(), equal));
    EXPECT_TRUE(std::equal(set.begin(), set.end(), setModel.begin(), setModel.end(), equal));
    EXPECT_TRUE(std::equal(dict.begin(), dict.end(), dictModel.begin(), dictModel.end(),
        [](const auto& a, const auto& b) { return a.key == b.first && a.value.Value() == b.second; }));

    // A copy has the same levels and is independent.
    WCValSkipListSet<Counted> copy(set);
    for (int level = 0; level < 5; ++level)
        EXPECT_EQ(copy.CountOnLevel(level), set.CountOnLevel(level));
    copy.Clear();
    EXPECT_TRUE(std::equal(set.begin(), set.end(), setModel.begin(), setModel.end(), equal));
    copy = std::move(set);
    EXPECT_TRUE(set.IsEmpty());
    EXPECT_TRUE(set.Insert(1));
    EXPECT_EQ(copy.Count(), setModel.size());
}

TEST_F(Elements, OfASkipListSurviveAFailedCopy)
{
    WCValSkipListDict<int, Counted> source;
    for (int i = 0; i < 20; ++i)
        source.Insert(i, i);
    WCValSkipListDict<int, Counted> target;
    target.Insert(1, 77);
    FailingCopies failing(10);
    EXPECT_THROW(target = source, std::runtime_error);
    EXPECT_THROW(target.Insert(2, Counted(1)), std::runtime_error);
    EXPECT_EQ(target.Count(), 1u);
    EXPECT_EQ(target.Find(1)->Value(), 77);
    EXPECT_EQ(target.Find(2), nullptr);
}

TEST(SkipListTest, FirstValueOfAKeyStays)
{
    WCValSkipListDict<int, int> dict;
    dict.Insert(1, 10);
    EXPECT_FALSE(dict.Insert(1, 11));
    dict[1] += 5;
    EXPECT_EQ(dict[2], 0);
    for (auto& [key, value] : dict)
        value += key;
    EXPECT_EQ(*std::as_const(dict).Find(1), 16);
    EXPECT_EQ(*dict.Find(2), 2);

    WCValSkipListSet<int> set;
    const int* one = &set.FindOrInsert(1);
    EXPECT_EQ(&set.FindOrInsert(1), one);
}

TEST(SkipListTest, PointerSetComparesWhatIsPointedAt)
{
    int values[] = {3, 1, 2, 1};
    WCPtrSkipListSet<int> set;
    for (int& value : values)
        set.Insert(&value);
    EXPECT_FALSE(set.Insert(nullptr));
    EXPECT_THAT(std::vector<int*>(set.begin(), set.end()), ElementsAre(&values[1], &values[2], &values[0]));
    EXPECT_EQ(set.Find(1), &values[1]);
    EXPECT_TRUE(set.Remove(2));
    EXPECT_FALSE(set.Contains(2));
}

} // namespace
