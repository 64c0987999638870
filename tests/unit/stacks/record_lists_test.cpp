#include "stacks/records.h"

#include <gtest/gtest.h>

#include <objidl.h>

#include <vector>

using namespace qx;

namespace
{

ModuleListPtr ListOf(std::initializer_list<std::uint64_t> bases)
{
    ModuleListPtr list(new clsDBGModuleList);
    for (const std::uint64_t base : bases)
    {
        auto item = std::make_unique<DBGModuleItem>();
        item->base = base;
        list->InsertByBase(std::move(item));
    }
    return list;
}

TEST(RecordLists, ModulesAreSortedByBase)
{
    const ModuleListPtr list = ListOf({0x3000, 0x1000, 0x2000, 0x1000, 0xFFFFFFFF00000000});
    DBGModuleItem* items[6] = {};
    QXULONG fetched = 99;
    EXPECT_EQ(list->Next(6, items, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 5u);
    EXPECT_EQ(items[5], nullptr); // only what was counted is filled
    const std::vector<std::uint64_t> kExpected = {0x1000, 0x1000, 0x2000, 0x3000, 0xFFFFFFFF00000000};
    for (std::size_t index = 0; index < kExpected.size(); ++index)
        EXPECT_EQ(items[index]->base, kExpected[index]);
}

TEST(RecordLists, ClonesHaveTheirOwnPositionsAndKeepTheRecords)
{
    ModuleListPtr list = ListOf({1, 2, 3});
    DBGModuleItem* item = nullptr;
    EXPECT_EQ(list->Skip(2), S_OK);
    EXPECT_EQ(list->Next(1, &item, nullptr), S_OK);
    EXPECT_EQ(item->base, 3u);
    EXPECT_EQ(list->Skip(1), S_FALSE);
    EXPECT_EQ(list->Next(1, &item, nullptr), S_FALSE);
    IDBGModuleList* clone = nullptr;
    ASSERT_EQ(list->Clone(&clone), S_OK);
    EXPECT_EQ(list->Reset(), S_OK);
    EXPECT_EQ(list->Next(0, nullptr, nullptr), S_OK);
    EXPECT_EQ(list->Next(1, &item, nullptr), S_OK);
    list.reset();
    EXPECT_EQ(clone->IsEmpty(), 0);
    EXPECT_EQ(clone->Next(1, &item, nullptr), S_OK); // a clone begins at the start
    EXPECT_EQ(item->base, 1u);
    EXPECT_EQ(clone->Release(), 0u);
    EXPECT_EQ(ListOf({})->IsEmpty(), 1);
}

TEST(RecordLists, AreOnlyIUnknown)
{
    const ModuleListPtr list = ListOf({});
    void* object = nullptr;
    EXPECT_EQ(list->QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(object, static_cast<IDBGModuleList*>(list.get()));
    EXPECT_EQ(list->Release(), 1u);
    EXPECT_EQ(list->QueryInterface(IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

} // namespace
