#include "prof/path.h"
#include "unit/prof/job_support.h"

#include <algorithm>
#include <random>
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
    int value;
};

String TextOf(const std::vector<ModelItem>& model)
{
    String text;
    for (const ModelItem& item : model)
        text += String(String::kFormatted, item.isList ? L"[%d]{v=%d;}" : L"%d=%d;", item.name, item.value);
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
        const int value = static_cast<int>(random() % 100000);
        const bool isList = random() % 2 == 0;
        const String number = String::FromInt(value);
        const String item = String::FromInt(name);
        const String leaf = isList ? item + L"/v" : item;
        const auto isIt = [&](const ModelItem& other)
        {
            return other.name == name && other.isList == isList;
        };
        const auto expected = std::find_if(model.begin(), model.end(), isIt);
        const auto action = random() % 60;
        if (action < 2)
        {
            RemoveByPath(list, item, isList ? ItemKind::List : ItemKind::Leaf);
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
            ASSERT_EQ(found != nullptr, expected != model.end()) << step;
            if (found != nullptr)
            {
                ASSERT_STREQ(found->ValueText(), String::FromInt(expected->value)) << step;
            }
        }
        if (step % 500 == 0)
        {
            ASSERT_STREQ(Tree(list), TextOf(model)) << step;
        }
    }
}
