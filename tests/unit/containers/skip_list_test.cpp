#include "containers/skip_list.h"

#include "counted.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <thread>
#include <vector>

using namespace qx;
using testing::ElementsAre;

static_assert(std::forward_iterator<WCValSkipList<int>::const_iterator>);

namespace
{

// A generator that gives what the test wrote down.
class ScriptedRandom
{
public:
    explicit ScriptedRandom(std::vector<int> numbers)
    {
        script = std::move(numbers);
        calls = 0;
    }
    static int Next() { return script.at(calls++); }
    static inline std::size_t calls = 0;

private:
    static inline std::vector<int> script;
};

// The bits of seven pairs, the first drawn first.
int Pairs(const std::vector<int>& pairs)
{
    int bits = 0;
    for (std::size_t i = 0; i < pairs.size(); ++i)
        bits |= pairs[i] << (2 * i);
    return bits;
}

TEST(LevelSourceTest, CountsPairsThatAreZeroUnderTheSelector)
{
    const int first = Pairs({0, 0, 1, 0, 2, 0, 0});
    const int second = Pairs({0, 3, 3, 3, 3, 3, 3});
    {
        ScriptedRandom random({first, second});
        WCLevelSource source(&ScriptedRandom::Next);
        EXPECT_EQ(source.Draw(3, 19), 2); // 0 0 | 1
        EXPECT_EQ(source.Draw(3, 19), 1); // 0 | 2
        EXPECT_EQ(ScriptedRandom::calls, 1u);
        EXPECT_EQ(source.Draw(3, 19), 3); // 0 0, and a new call: 0 | 3
        EXPECT_EQ(ScriptedRandom::calls, 2u);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(source.Draw(3, 19), 0);
        EXPECT_EQ(ScriptedRandom::calls, 2u);
    }
    {
        ScriptedRandom random({first, second});
        WCLevelSource source(&ScriptedRandom::Next);
        EXPECT_EQ(source.Draw(1, 19), 2); // 0 0 | 1
        EXPECT_EQ(source.Draw(1, 2), 2);  // 0 2 0 0, 0 | 3: five, cut to the limit, all of them used up
        EXPECT_EQ(source.Draw(1, 19), 0);
        EXPECT_EQ(ScriptedRandom::calls, 2u);
    }
}

TEST(LevelSourceTest, UsesFourteenBitsOfACall)
{
    ScriptedRandom random({~0x3FFF, 0x3FFF});
    WCLevelSource source(&ScriptedRandom::Next);
    EXPECT_EQ(source.Draw(3, 19), 7);
    EXPECT_EQ(ScriptedRandom::calls, 2u);
}

TEST(SkipListTest, ParametersAreClipped)
{
    const struct
    {
        unsigned selector;
        int levels;
        unsigned expectedSelector;
        int expectedLevels;
    } cases[] = {{3, 8, 3, 8}, {1, 20, 1, 20}, {0, 0, 3, 1}, {2, -4, 3, 1}, {7, 21, 3, 20}};
    for (const auto& c : cases)
    {
        const WCValSkipList<int> list(c.selector, c.levels);
        EXPECT_EQ(list.Selector(), c.expectedSelector);
        EXPECT_EQ(list.MostLevels(), c.expectedLevels);
    }
}

TEST(SkipListTest, LevelsThinOutBySelector)
{
    const struct
    {
        unsigned selector;
        int levels;
        double share; // of a level's nodes that rise to the next
    } cases[] = {{3, 8, 0.25}, {1, 20, 0.5}, {3, 3, 0.25}};
    constexpr int count = 20000;
    for (const auto& c : cases)
    {
        std::srand(5);
        WCValSkipListSet<int> set(c.selector, c.levels);
        int top = set.LevelsInUse();
        for (int i = 0; i < count; ++i)
        {
            set.Insert(i * 7919 % 20011);
            ASSERT_LE(set.LevelsInUse(), top + 1);
            top = set.LevelsInUse();
        }
        EXPECT_LE(top, c.levels);
        // Five standard deviations of the binomial distribution, and some for the first nodes, which the top cuts.
        double expected = count;
        for (int level = 0; level < top; ++level, expected *= c.share)
            EXPECT_NEAR(static_cast<double>(set.CountOnLevel(level)), expected, 5 * std::sqrt(expected) + 10) << level;
    }
}

TEST(SkipListTest, DuplicatesStayInTheOrderOfInsertion)
{
    struct Element
    {
        int key;
        int mark;
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

TEST(SkipListTest, MatchesTheStandardContainersUnderRandomOperations)
{
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
    EXPECT_EQ(Counted::living, 0);
}

TEST(SkipListTest, FailedCopyLosesNothing)
{
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
    EXPECT_EQ(Counted::living, 0);
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

// All lists of the module draw from one store.
TEST(SkipListTest, ListsOfSeveralThreadsShareTheLevelSource)
{
    std::vector<std::thread> threads;
    std::vector<WCValSkipListSet<int>> sets(4);
    for (auto& set : sets)
        threads.emplace_back(
            [&set]
            {
                for (int i = 0; i < 5000; ++i)
                    set.Insert(i);
            });
    for (std::size_t i = 0; i < threads.size(); ++i)
    {
        threads[i].join();
        EXPECT_EQ(sets[i].Count(), 5000u);
        EXPECT_NEAR(static_cast<double>(sets[i].CountOnLevel(1)), 1250, 160);
    }
}

} // namespace
