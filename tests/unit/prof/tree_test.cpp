#include "prof/path.h"
#include "unit/prof/job_support.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <string_view>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

// A model of a list: a sequence of items, searched from the front.
struct ModelItem
{
    int name;
    bool isList;
    int value; // a list contains it as its only leaf
};

constexpr int kNoValue = -1;

String TextOf(const std::vector<ModelItem>& model)
{
    String text;
    for (const ModelItem& item : model)
        text += item.value == kNoValue
                    ? String(String::kFormatted, L"[%d]{}", item.name)
                    : String(String::kFormatted, item.isList ? L"[%d]{v=%d;}" : L"%d=%d;", item.name, item.value);
    return text;
}

} // namespace

// The index of a list is created and dropped internally. Order, first matches and duplicates must remain those of a
// linear search.
TEST(ProfTree, BehavesLikeAPlainRowOfItems)
{
    std::mt19937 random(11);
    const JobHolder job = NewJob();
    clsItemList& list = job->Root();
    std::vector<ModelItem> model;
    for (int step = 0; step < 30000; ++step)
    {
        const int name = static_cast<int>(random() % 150);
        // Items share short values until the last of them stops using the value.
        const int value = static_cast<int>(random() % (random() % 2 == 0 ? 30 : 100000));
        const bool isList = random() % 2 == 0;
        const String number = String::FromInt(value), item = String::FromInt(name), leaf = isList ? item + L"/v" : item;
        const auto isIt = [&](const ModelItem& other)
        {
            return other.name == name && other.isList == isList;
        };
        const auto expected = std::find_if(model.begin(), model.end(), isIt);
        const auto action = random() % 60;
        if (action < 2)
        {
            // Removing a leaf from all lists with a name must find each of these lists.
            const bool isWithin = isList && value % 2 == 0;
            RemoveByPath(list, isWithin ? leaf : item, isList && !isWithin ? ItemKind::List : ItemKind::Leaf);
            if (isWithin)
                for (ModelItem& other : model)
                    other.value = isIt(other) ? kNoValue : other.value;
            else
                std::erase_if(model, isIt);
        }
        else if (action == 2 && step % 40 == 0)
        {
            list.RemoveAll();
            model.clear();
        }
        else if (action < 8)
        {
            if (isList)
                SetLeafByPath(AppendListByPath(list, item), L"v", number.Text());
            else
                AppendLeafByPath(list, item, number.Text());
            model.push_back({name, isList, value});
        }
        else if (action < 16)
        {
            SetLeafByPath(list, leaf, number.Text());
            if (expected != model.end())
                expected->value = value;
            else
                model.push_back({name, isList, value});
        }
        else
        {
            const clsItem* found = FindLeafByPath(list, leaf);
            ASSERT_EQ(found != nullptr, expected != model.end() && expected->value != kNoValue) << step;
            if (found != nullptr)
            {
                ASSERT_STREQ(found->ValueText(), String::FromInt(expected->value)) << step;
                SetLeafByPath(list, leaf, found->Value()); // the new value is the old value itself
            }
        }
        if (step % 500 == 0)
        {
            ASSERT_STREQ(Tree(list), TextOf(model)) << step;
        }
    }
}

// Removing an item must not walk the list. The comparison allows a factor, because the machine may be busy; walks would
// take more than 1,000 times as long.
TEST(ProfTree, RemovingFromALargeListIsAsCheapAsFinding)
{
    constexpr int kItems = 80000;
    using Clock = std::chrono::steady_clock;
    const JobHolder job = NewJob();
    clsItemList& list = job->Root();
    std::vector<String> names;
    for (int i = 0; i < kItems; ++i)
        names.push_back(L"name" + String::FromInt(i));
    const auto secondsOf = [&](auto operation)
    {
        const Clock::time_point start = Clock::now();
        for (const String& name : names)
            operation(name);
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    double finding = 0;
    for (const std::string_view order : {"forwards", "backwards", "mixed"})
    {
        for (const wchar_t* value : {L"first", L"second"})
            for (int i = 0; i < kItems; ++i)
                AppendLeafByPath(list, L"name" + String::FromInt(i), value);
        if (order == "forwards")
            finding = secondsOf([&](const String& name) { EXPECT_NE(FindLeafByPath(list, name), nullptr); });
        else if (order == "backwards")
            std::reverse(names.begin(), names.end());
        else
            std::shuffle(names.begin(), names.end(), std::mt19937(3));
        const auto remove = [&](const String& name)
        {
            RemoveByPath(list, name, ItemKind::Leaf);
            EXPECT_TRUE(order != "mixed" || FindLeafByPath(list, name) == nullptr);
        };
        EXPECT_LT(secondsOf(remove), 100 * finding) << order;
        EXPECT_TRUE(list.IsEmpty());
    }
    for (const String& name : names)
        SetLeafByPath(list, name + L"/x", L"1");
    EXPECT_LT(secondsOf([&](const String& name) { RemoveByPath(list, name + L"/x", ItemKind::Leaf); }), 100 * finding)
        << "within lists of a large list";
    EXPECT_TRUE(list.FindList(names.front().Text())->IsEmpty());
}
