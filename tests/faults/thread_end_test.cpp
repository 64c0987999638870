// Threads that end inside a callback: by themselves, or because they are cancelled. The library must release what it
// holds, so that other threads can go on with the same objects and files.
#include <qxut23/archives.h>
#include <qxut23/packed_text.h>
#include <qxut23/profile.h>
#include <qxut23/zip.h>

#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include <pthread.h>

namespace
{

using End = void (*)();

constexpr End kEnds[] = {
    [] { pthread_exit(nullptr); },
    []
    {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    },
};

// Returns true if the thread ended before the body returned.
bool EndsInside(std::function<void()> body)
{
    pthread_t thread;
    const auto run = [](void* given) -> void*
    {
        (*static_cast<std::function<void()>*>(given))();
        return given;
    };
    void* result = nullptr;
    return pthread_create(&thread, nullptr, run, &body) == 0 && pthread_join(thread, &result) == 0 && result != &body;
}

// Runs the operation once for each way to end a thread, on a thread that the operation's callback ends in this way.
// Expects that the operation never returns. It passes its argument to the callback.
void ExpectToEndInside(const std::function<void(End*)>& operation)
{
    for (End end : kEnds)
        EXPECT_TRUE(EndsInside([&] { operation(&end); }));
}

constexpr auto kEndThread = [](void* end, auto...) -> std::int32_t
{
    (*static_cast<End*>(end))();
    return 1;
};

} // namespace

TEST(ThreadEnd, InAnEnumerationOfAProfile)
{
    const HPROFJOB job = ProfJobOpenW(nullptr);
    ProfAppendStringW(job, nullptr, L"name", L"value");
    const auto callback = [](HPROFJOB, const QXWCHAR*, const QXWCHAR*, HPROFLIST, void* end) -> std::int32_t
    {
        return kEndThread(end);
    };
    ExpectToEndInside([&](End* end) { ProfEnumW(job, nullptr, callback, end); });
    QXWCHAR value[10] = {};
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"name", value, 10, L""), 5);
    ProfJobClose(job);
}

TEST(ThreadEnd, InAnExtraction)
{
    const qxtest::TempFolder folder;
    const qx::String source = folder.Make(L"source", "content"), archive = folder.Path(L"x.zip");
    const HZIPFILE zip = UtilZIPCreate(archive.Text(), nullptr);
    ASSERT_EQ(UtilZIPAppend(zip, source.Text(), nullptr, L"member"), QXUT_ZIP_OK);
    ASSERT_EQ(UtilZIPClose(zip), QXUT_ZIP_OK);
    const auto extract = [&](QxExtractProgress progress, End* end)
    {
        return QxExtractZip(archive.Text(), folder.Path().Text(), 0, nullptr, progress, end);
    };
    ExpectToEndInside([&](End* end) { extract(kEndThread, end); });
    EXPECT_EQ(extract(nullptr, nullptr), QXUT_EXTRACT_OK);
    EXPECT_EQ(qxtest::BytesOf(folder.Path(L"member")), "content");
}

TEST(ThreadEnd, WhenUnpackedDataArrive)
{
    ExpectToEndInside([](End* end) { QxUnpackText(L"", nullptr, kEndThread, end); });
}
