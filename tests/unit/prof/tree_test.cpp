#include "prof/path.h"
#include "unit/prof/job_support.h"

#include <algorithm>
#include <random>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

// What a list is told to be: a row of items, searched from the front.
struct ModelItem
{
    int name;
    bool isList;
    int value;
};

class Model
{
public:
    ModelItem* Find(int name, bool isList)
    {
        const auto found = std::find_if(_items.begin(), _items.end(),
            [&](const ModelItem& item) { return item.name == name && item.isList == isList; });
        return found != _items.end() ? &*found : nullptr;
    }
    void Append(int name, bool isList, int value) { _items.push_back({name, isList, value}); }
    void Remove(int name, bool isList)
    {
        std::erase_if(_items, [&](const ModelItem& item) { return item.name == name && item.isList == isList; });
    }
    void Clear() { _items.clear(); }

    String Text() const
    {
        String text;
        for (const ModelItem& item : _items)
        {
            text += item.isList ? String(String::formatted, L"[%d]{v=%d;}", item.name, item.value)
                                : String(String::formatted, L"%d=%d;", item.name, item.value);
        }
        return text;
    }

private:
    std::vector<ModelItem> _items;
};

} // namespace

// The index of a list comes and goes behind the operations; order, first ones and duplicates stay those of the walk.
TEST(ProfTree, BehavesLikeAPlainRowOfItems)
{
    std::mt19937 random(11);
    const JobHolder job = NewJob();
    clsItemList& list = job->Root();
    Model model;
    for (int step = 0; step < 30000; ++step)
    {
        const int name = static_cast<int>(random() % 150);
        const int value = static_cast<int>(random() % 100000);
        const String number = String::FromInt(value);
        const String leaf = String::FromInt(name);
        const String inList = leaf + L"/v";
        switch (random() % 60)
        {
        case 0:
            RemoveByPath(list, leaf, ItemKind::Leaf);
            model.Remove(name, false);
            break;
        case 1:
            RemoveByPath(list, leaf, ItemKind::List);
            model.Remove(name, true);
            break;
        case 2:
            if (step % 40 == 0)
            {
                list.RemoveAll();
                model.Clear();
            }
            break;
        case 3:
        case 4:
        case 5:
            AppendLeafByPath(list, leaf, number.Text());
            model.Append(name, false, value);
            break;
        case 6:
        case 7:
            SetLeafByPath(AppendListByPath(list, leaf), L"v", number.Text());
            model.Append(name, true, value);
            break;
        case 8:
        case 9:
        case 10:
        case 11:
            SetLeafByPath(list, inList, number.Text());
            if (ModelItem* item = model.Find(name, true))
                item->value = value;
            else
                model.Append(name, true, value);
            break;
        case 12:
        case 13:
        case 14:
        case 15:
            SetLeafByPath(list, leaf, number.Text());
            if (ModelItem* item = model.Find(name, false))
                item->value = value;
            else
                model.Append(name, false, value);
            break;
        default:
        {
            const bool isInList = random() % 2 == 0;
            const clsItem* found = FindLeafByPath(list, isInList ? inList : leaf);
            const ModelItem* expected = model.Find(name, isInList);
            ASSERT_EQ(found != nullptr, expected != nullptr) << step;
            if (found != nullptr)
            {
                ASSERT_STREQ(found->ValueText(), String::FromInt(expected->value)) << step;
            }
        }
        }
        if (step % 500 == 0)
        {
            ASSERT_STREQ(Tree(list), model.Text()) << step;
        }
    }
}
