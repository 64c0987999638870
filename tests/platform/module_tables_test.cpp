// Build ids of modules, without which captures don't cache unwind rules. This program has no build id. Linux only.
#include "stack/module_tables.h"

#include <gtest/gtest.h>

#include <cstring>

#include <dlfcn.h>

using qxplatform::FindModuleTables;
using qxplatform::ModuleTables;

namespace
{

void InProgram() {}

} // namespace

// The program needs no build id for its rules to be cached, because nothing else can be loaded at its address.
TEST(ModuleTables, OfAProgramWithoutBuildId)
{
    ModuleTables tables;
    ASSERT_TRUE(FindModuleTables(reinterpret_cast<std::uintptr_t>(&InProgram), tables));
    EXPECT_NE(tables.table.index.begin, nullptr);
    EXPECT_NE(tables.buildId, nullptr);
    EXPECT_EQ(tables.buildIdSize, 0u);
}

// The library's resources are notes in the same segment as its build id, and extend beyond the first page.
TEST(ModuleTables, HaveTheBuildIdInFrontOfLongNotes)
{
    void* const library = dlopen(QX_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto address = reinterpret_cast<std::uintptr_t>(dlsym(library, "UtilDebug"));
    ModuleTables tables;
    ASSERT_TRUE(FindModuleTables(address, tables));
    EXPECT_TRUE(tables.begin <= address && address < tables.end);
    ASSERT_NE(tables.buildId, nullptr);
    EXPECT_EQ(tables.buildIdSize, 16u);
    // The header of the note precedes its contents.
    EXPECT_EQ(std::memcmp(tables.buildId - 4, "GNU", 4), 0);
    EXPECT_LT(reinterpret_cast<std::uintptr_t>(tables.buildId) - tables.begin, 4096u);
    dlclose(library);
}
