#include <qxut23/addresses.h>
#include <qxut23/stacks.h>

#include "stacks/debug_help_client.h"

#include <gmock/gmock.h>

#include <string>

// Uses a single session, because opening one is slow on some systems.
TEST(DebugHelpExports, DeliverLists)
{
    HDEBUGHELPJOB const job = UtilDebugHelpJobOpen();
    ASSERT_NE(job, nullptr);
    UtilDebugHelpSetOption(job, 1, 5);
    UtilDebugHelpSetOption(job, 77, 5); // an unknown option
    IDBGStackTraceList* frames = nullptr;
    ASSERT_EQ(UtilDebugHelpGetStackTrace(job, &frames, nullptr), 1);
    IDBGModuleList* modules = nullptr;
    ASSERT_EQ(UtilDebugHelpGetModuleList(job, &modules), 1);
    UtilDebugHelpJobClose(job);

    // Lists outlive their job.
    DBGStackTraceItem* items[6];
    QXULONG count = 0;
    EXPECT_EQ(frames->Next(6, items, &count), 1);
    ASSERT_EQ(count, 5u);
    bool hasCaller = false;
    for (QXULONG index = 0; index < count; ++index)
        hasCaller |= std::string(items[index]->symbol).find("DeliverLists") != std::string::npos;
    EXPECT_TRUE(hasCaller);
    EXPECT_EQ(modules->Skip(2), 0);
    EXPECT_EQ(frames->Release(), 0u);
    EXPECT_EQ(modules->Release(), 0u);
}

// Another module finds this library by its name.
TEST(DebugHelpExports, AreBoundByClients)
{
    const qx::clsUtilDebugHelpWrapper client;
    ASSERT_NE(client.Job(), nullptr);
    IDBGStackTraceList* frames = nullptr;
    ASSERT_EQ(UtilDebugHelpGetStackTrace(reinterpret_cast<HDEBUGHELPJOB>(client.Job()), &frames, nullptr), 1);
    EXPECT_EQ(frames->IsEmpty(), 0);
    frames->Release();
}

TEST(DebugHelpExports, RejectNullAndHandOutTwoLocks)
{
    IDBGStackTraceList* frames = reinterpret_cast<IDBGStackTraceList*>(8);
    EXPECT_EQ(UtilDebugHelpGetStackTrace(nullptr, &frames, nullptr), 0);
    EXPECT_EQ(frames, nullptr);
    EXPECT_EQ(UtilDebugHelpGetModuleList(nullptr, nullptr), 0);
    UtilDebugHelpSetOption(nullptr, 1, 1);
    UtilDebugHelpJobClose(nullptr);
    EXPECT_EQ(QxDescribeAddresses(nullptr, 1, 0, nullptr, nullptr), 0);

    void* locks[] = {nullptr, nullptr};
    UtilGetDBGHELPThreadingCS(&locks[0]);
    UtilGetGDIThreadingCS(&locks[1]);
    EXPECT_TRUE(locks[0] != nullptr && locks[1] != nullptr && locks[0] != locks[1]);
}
