// The list of documents: cache, changed files, shares that hang.
#include "docinfo/document_list.h"
#include "docinfo/share_guard.h"
#include "docinfo/share_reader.h"
#include "support/link_builder.h"
#include "support/temp_folder.h"
#include "support/variable.h"
#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

using namespace qx;
using qxtest::MakeFile;
using qxtest::TempFolder;
using qxtest::TextOf;

namespace
{

constexpr char kFirst[] = "<head><title>first</title></head>";
constexpr char kSecond[] = "<head><title>second</title></head>";

std::string TitleOf(clsDocuList& list, const String& path, std::uint32_t wait = 0)
{
    const auto record = list.Get(path, wait);
    const clsCriticalSectionLock lock(record->Section());
    return record->accessible ? TextOf(record->Title) : "inaccessible";
}

} // namespace

TEST(DocumentList, KeepsRecordsForTheirLifetime)
{
    const TempFolder folder;
    const String path = folder.Make(L"Page.htm", kFirst);
    clsDocuList cached(1'000), uncached(0);
    EXPECT_EQ(TitleOf(cached, path), "first");
    EXPECT_EQ(cached.Get(path, 0).Get(), cached.Get(path, 0).Get());
    String otherCase = path;
    otherCase.MakeUpper();
    EXPECT_EQ(cached.Get(otherCase, 0).Get(), cached.Get(path, 0).Get());
    EXPECT_NE(uncached.Get(path, 0).Get(), uncached.Get(path, 0).Get());

    MakeFile(path, kSecond);
    EXPECT_EQ(TitleOf(cached, path), "first"); // the disk isn't touched
    EXPECT_EQ(TitleOf(cached, path + L"|page 1"), "second");
    EXPECT_EQ(TextOf(cached.Get(path + L"|page 1|2", 0)->suffix), "page 1|2");
    EXPECT_EQ(TitleOf(uncached, path), "second");
    DeleteFileW(path);
    EXPECT_EQ(TitleOf(cached, path), "first");
    EXPECT_EQ(TitleOf(uncached, path), "inaccessible");
}

TEST(DocumentList, ReadsAgainWhatHasChanged)
{
    const TempFolder folder;
    const String path = folder.Make(L"page.htm", kFirst);
    clsDocuList list(1'000);
    const auto record = list.Get(path, 0);
    const FILETIME time = {0, 0x01D00000};
    const auto expire = [&]
    {
        record->readTick = 1;
    };

    // A record that has expired is parsed again only if the file's time has changed.
    MakeFile(path, kSecond);
    SYSTEMTIME unchanged = record->fileTime;
    FILETIME written = {};
    SystemTimeToFileTime(&unchanged, &written);
    qxtest::SetWriteTime(path, written);
    expire();
    EXPECT_EQ(TitleOf(list, path), "first");
    qxtest::SetWriteTime(path, time);
    expire();
    EXPECT_EQ(TitleOf(list, path), "second");
    FileTimeToSystemTime(&time, &unchanged);
    EXPECT_EQ(qxtest::DateOf(record->LastSaved), qxtest::DateOf(unchanged));

    // A record that was cleared is read although the time is the same.
    DeleteFileW(path);
    expire();
    EXPECT_EQ(TitleOf(list, path), "inaccessible");
    MakeFile(path, kFirst);
    qxtest::SetWriteTime(path, time);
    EXPECT_EQ(TitleOf(list, path), "first");

    // A file in use leaves the record as it is, and is tried at the next request.
    const HANDLE lock = CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    expire();
    EXPECT_EQ(TitleOf(list, path), "first");
    EXPECT_EQ(record->readTick, 0u);
    CloseHandle(lock);
    EXPECT_EQ(TitleOf(list, path), "first");
    EXPECT_NE(record->readTick, 0u);
}

TEST(DocumentList, ReadersByNameAndByFirstBytes)
{
    const TempFolder folder;
    clsDocuList list(0);
    using namespace std::string_view_literals;
    const struct
    {
        const wchar_t* name;
        std::string_view bytes;
        const char* title; // "-": accessible without a title
        const wchar_t* reader;
    } files[] = {
        {L"a.HTM", kFirst, "first", L"HTML"},
        {L"a.mht", kFirst, "first", L"HTML"},
        {L"a.txt", kFirst, "-", L"-"},
        {L"a.tif", "not a TIFF file", "inaccessible", L"TIFF"},
        {L"b.tif", "MM\0*\0\0\0\0"sv, "-", L"TIFF"},
        {L"c.img", "MM\0*\0\0\0\0"sv, "-", L"-"}, // first bytes of the other order aren't known
        {L"d.img", "II*\0\0\0\0\0"sv, "-", L"TIFF"},
        {L"e.img", "II*\0"sv, "-", L"TIFF"}, // first bytes prove little, so the reader may fail
        {L"f.jpg", "\xFF\xD8", "-", L"JPEG"},
        {L"g", "\xFF\xD8\xFF\xD9", "-", L"JPEG"},
        {L"h", "\xFF\xD8", "-", L"-"}, // fewer than four bytes
        {L"i.rtf", R"({\info{\title x}})", " x", L"RTF"},
    };
    for (const auto& file : files)
    {
        const String path = folder.Make(file.name, file.bytes);
        EXPECT_EQ(TitleOf(list, path), file.title) << String(file.name).NarrowText();
        const wchar_t* const reader = list.Get(path, 0)->reader;
        EXPECT_STREQ(reader != nullptr ? reader : L"-", file.reader);
    }
    EXPECT_EQ(TitleOf(list, folder.Path()), "inaccessible"); // a folder
}

TEST(DocumentList, ManyThreads)
{
    const TempFolder folder;
    std::vector<String> paths;
    for (int i = 0; i < 5; ++i)
        paths.push_back(folder.Make(String(String::kFormatted, L"%d.htm", i), kFirst));
    clsDocuList shared(1'000);
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 8; ++number)
        threads.emplace_back(
            [&, number]
            {
                clsDocuList own(number % 2);
                for (unsigned i = 0; i < 100; ++i)
                {
                    const String& path = paths[(i + number) % paths.size()];
                    failures += TitleOf(shared, path) != "first" || TitleOf(own, path) != "first";
                    shared.Get(path, 0)->readTick = 1; // expired
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

// A list without records has no thread, and one that has is woken at the end.
TEST(DocumentList, OpensAndClosesQuickly)
{
    const TempFolder folder;
    const String path = folder.Make(L"page.htm", kFirst);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
    {
        clsDocuList list(10);
        EXPECT_EQ(list.GetThreadState(), clsThreadBase::State::None);
        EXPECT_EQ(TitleOf(list, path), "first");
        EXPECT_EQ(list.GetThreadState(), clsThreadBase::State::Running);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST(DocumentCache, DropsExpiredRecords)
{
    DocumentCache cache;
    const auto kept = clsDocu::Create(String(L"kept"), nullptr, 10, 0);
    kept->readTick = 100;
    EXPECT_TRUE(cache.Insert(IString(L"kept"), kept));
    EXPECT_FALSE(cache.Insert(IString(L"new"), clsDocu::Create(String(L"new"), nullptr, 10, 0)));
    cache.RemoveExpired(110);
    EXPECT_EQ(cache.Find(IString(L"KEPT")).Get(), kept.Get());
    EXPECT_FALSE(cache.Find(IString(L"new"))); // never read
    cache.RemoveExpired(111);
    EXPECT_FALSE(cache.Find(IString(L"kept")));
}

#if !defined(_WIN32) // the layer's shares are folders of its own

namespace
{

bool WaitUntil(const std::function<bool()>& condition)
{
    for (int i = 0; i < 1'000; ++i, Sleep(10))
        if (condition())
            return true;
    return false;
}

// Stands for a server that doesn't answer: readings wait until Release.
class HangingServer
{
public:
    HangingServer()
    {
        started = 0;
        released = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        SetShareReading(
            [](clsDocu& record, std::uint64_t, clsCriticalSection* section)
            {
                ++started;
                if (record.path.View().find(L"slow") != std::wstring_view::npos)
                    WaitForSingleObject(released, INFINITE);
                const clsCriticalSectionLock lock(*section);
                record.accessible = true;
                clsDocu::SetText(record.Title, L"from the server");
            });
    }
    ~HangingServer()
    {
        Release();
        SetShareReading(nullptr);
        CloseHandle(released);
    }
    HangingServer(const HangingServer&) = delete;
    HangingServer& operator=(const HangingServer&) = delete;

    static void Release() { SetEvent(released); }

    static inline std::atomic<int> started = 0;

private:
    static inline HANDLE released = nullptr;
};

class DocumentsOnShares : public testing::Test
{
protected:
    DocumentsOnShares()
    {
        std::filesystem::create_directories(_home / "dosdevices/unc/server/share");
        std::filesystem::create_directories(_home / "dosdevices/unc/server/other");
    }
    ~DocumentsOnShares() override { std::filesystem::remove_all(_home); }

    const TempFolder _folder;
    const std::filesystem::path _home = qxtest::NativePath(_folder.Path(L"home"));
    const qxtest::Variable _variable{L"QXPLATFORM_HOME", _folder.Path(L"home")};
};

const String kSlow = L"\\\\server\\share\\slow.htm", kQuick = L"\\\\server\\share\\quick.htm";

} // namespace

TEST_F(DocumentsOnShares, Names)
{
    const std::pair<const wchar_t*, const wchar_t*> paths[] = {{L"\\\\server\\share\\a\\b", L"\\\\server\\share"},
        {L"\\\\server\\share", L"\\\\server\\share"}, {L"\\\\server", L""}, {L"\\\\", L""}, {L"/a/b", L""},
        {L"c:\\a", L""}};
    for (const auto& [path, share] : paths)
        EXPECT_EQ(ShareOfPath(path).View(), share);
    // Once a share didn't answer, it isn't asked again.
    const IString back(L"\\\\server\\back");
    EXPECT_FALSE(IsShareUnreachable(back, true));
    EXPECT_TRUE(IsShareUnreachable(back, false));
    std::filesystem::create_directories(_home / "dosdevices/unc/server/back");
    EXPECT_TRUE(IsShareUnreachable(IString(L"\\\\SERVER\\Back"), false));
    EXPECT_FALSE(IsShareUnreachable(IString(L"\\\\server\\other"), false));
}

TEST_F(DocumentsOnShares, ReadByThreadsOfTheirOwn)
{
    std::filesystem::create_directories(_home / "dosdevices/unc/server/share/folder");
    MakeFile(_folder.Path(L"home/dosdevices/unc/server/share/page.htm"), kFirst);
    clsDocuList list(0);
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\page.htm", 100), "first");
    EXPECT_EQ(list.Get(L"\\\\server\\share\\page.htm", 100)->resolvedPath.View(), L"\\\\server\\share\\page.htm");
    const String link = _folder.Make(L"a.lnk", qxtest::LinkOf({.share = R"(\\server\share)", .suffix = "page.htm"}));
    EXPECT_EQ(TitleOf(list, link, 100), "first");
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\none.htm", 100), "inaccessible");
    EXPECT_EQ(TitleOf(list, L"\\\\server\\missing\\page.htm", 100), "inaccessible");
}

TEST_F(DocumentsOnShares, AServerThatHangs)
{
    HangingServer server;
    clsDocuList list(1'000);
    EXPECT_EQ(TitleOf(list, kSlow, 0), "inaccessible"); // the caller doesn't wait
    EXPECT_EQ(TitleOf(list, kQuick, 100), "from the server");
    EXPECT_TRUE(WaitUntil([] { return HangingServer::started == 2; }));
    HangingServer::Release();
    Sleep(50);
    EXPECT_EQ(TitleOf(list, kSlow, 0), "inaccessible"); // the late result is dropped
}

TEST_F(DocumentsOnShares, TwentyReadersAtMost)
{
    HangingServer server;
    clsDocuList list(0);
    for (std::size_t i = 0; i < clsDocuList::kMostReaders; ++i)
        list.Get(kSlow, 0);
    std::atomic<bool> isBack = false;
    std::thread last(
        [&]
        {
            list.Get(kSlow, 0);
            isBack = true;
        });
    EXPECT_TRUE(WaitUntil([] { return HangingServer::started == clsDocuList::kMostReaders + 1; }));
    EXPECT_EQ(TitleOf(list, kQuick, 100), "from the server"); // a reader that has ended needs no room
    Sleep(200);
    EXPECT_FALSE(isBack);
    HangingServer::Release();
    last.join();
}

TEST_F(DocumentsOnShares, ClosingWaitsForTheReaders)
{
    HangingServer server;
    auto list = std::make_unique<clsDocuList>(0);
    list->Get(kSlow, 0);
    std::atomic<bool> isClosed = false;
    std::thread closing(
        [&]
        {
            list.reset();
            isClosed = true;
        });
    Sleep(100);
    EXPECT_FALSE(isClosed);
    HangingServer::Release();
    closing.join();
    EXPECT_TRUE(isClosed);
}

#endif
