// The list of documents: cache, changed files, shares that hang.
#include "docinfo/document_list.h"
#include "docinfo/share_guard.h"
#include "docinfo/share_reader.h"
#include "support/compound_builder.h"
#include "support/link_builder.h"
#include "support/run_in_threads.h"
#include "support/temp_folder.h"
#include "support/zip_builder.h"
#include "unit/docinfo/document_in_memory.h"

#if !defined(_WIN32) // only the tests on linux connect drives
#include "support/own_drives.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/fanotify.h>
#include <unistd.h>
#endif

#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <future>
#include <string>
#include <vector>

using namespace qx;
using namespace std::chrono_literals;
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

// Several threads read the documents, whose title is "first", through a shared list and through lists of their own.
void ExpectFirstInManyThreads(const std::vector<String>& paths, unsigned rounds, std::uint32_t wait)
{
    clsDocuList shared(1'000);
    for (const String& path : paths) // while a record is read, other callers get its old values
        EXPECT_EQ(TitleOf(shared, path, wait), "first");
    std::atomic<int> failures = 0;
    qxtest::RunInThreads(8,
        [&](unsigned number)
        {
            clsDocuList own(number % 2);
            for (unsigned i = 0; i < rounds; ++i)
            {
                const String& path = paths[(i + number) % paths.size()];
                failures += TitleOf(shared, path, wait) != "first" || TitleOf(own, path, wait) != "first";
                shared.Get(path, wait)->readTick = 1; // expired
            }
        });
    EXPECT_EQ(failures, 0);
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
    const auto titleAfterExpiry = [&]
    {
        record->readTick = 1;
        return TitleOf(list, path);
    };

    // A record that has expired is parsed again only if the file's time has changed.
    MakeFile(path, kSecond);
    FILETIME written = {};
    SystemTimeToFileTime(&record->fileTime, &written);
    qxtest::SetWriteTime(path, written);
    EXPECT_EQ(titleAfterExpiry(), "first");
    qxtest::SetWriteTime(path, time);
    EXPECT_EQ(titleAfterExpiry(), "second");
    SYSTEMTIME changed = {};
    FileTimeToSystemTime(&time, &changed);
    EXPECT_EQ(qxtest::DateOf(record->LastSaved), qxtest::DateOf(changed));

    // A record that was cleared is read although the time is the same.
    DeleteFileW(path);
    EXPECT_EQ(titleAfterExpiry(), "inaccessible");
    MakeFile(path, kFirst);
    qxtest::SetWriteTime(path, time);
    EXPECT_EQ(TitleOf(list, path), "first");

    // A file in use leaves the record unchanged, and the next request tries again.
    const HANDLE lock = CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(titleAfterExpiry(), "first");
    EXPECT_EQ(record->readTick, 0u);
    CloseHandle(lock);
    EXPECT_EQ(TitleOf(list, path), "first");
    EXPECT_NE(record->readTick, 0u);
}

TEST(DocumentList, ReadersByNameAndByFirstBytes)
{
    const TempFolder folder;
    clsDocuList list(0);
    using namespace std::string_literals;
    const std::string storage = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"; // a compound file's first bytes
    const std::string mailLikeStorage = storage + "\r\nSubject: text\r\n\r\n" + std::string(1'000, 'x');
    const std::string message = qxtest::CompoundBuilder()
                                    .AddStream("__substg1.0_0037001E", "subject")
                                    .AddStream("__properties_version1.0", std::string(32, 'x'))
                                    .Bytes();
    const std::string title = "<dc:title>t</dc:title>";
    const std::string core = "<cp:coreProperties x>" + title + "</cp:coreProperties>";
    const std::string meta = "<office:document-meta a><office:meta>" + title + "</office:meta></office:document-meta>";
    const std::string archive = qxtest::Build({{"docProps/core.xml", core}});
    // The title "-" means an accessible file without a title. The remark begins with the last text.
    const struct
    {
        const wchar_t* name;
        std::string bytes;
        const char* title;
        const wchar_t* reader;
        const wchar_t* remark = L"";
    } files[] = {
        {L"a.HTM", kFirst, "first", L"HTML"}, {L"a.mht", kFirst, "first", L"HTML"}, {L"a.txt", kFirst, "-", nullptr},
        {L"a.tif", "not a TIFF file", "inaccessible", L"TIFF"}, {L"b.tif", "MM\0*\0\0\0\0"s, "-", L"TIFF"},
        {L"c.img", "MM\0*\0\0\0\0"s, "-", nullptr}, // the signature of the other byte order isn't recognised
        {L"d.img", "II*\0\0\0\0\0"s, "-", L"TIFF"},
        {L"e.img", "II*\0"s, "-", L"TIFF"}, // a signature proves little, so the reader may fail
        {L"f.jpg", "\xFF\xD8", "-", L"JPEG"}, {L"g", "\xFF\xD8\xFF\xD9", "-", L"JPEG"},
        {L"h", "\xFF\xD8", "-", nullptr}, // fewer than four bytes
        {L"i.rtf", R"({\info{\title x}})", " x", L"RTF"}, {L"j.EML", storage, "-", L"mail"},
        {L"j.msg", "Subject: a\r\n\r\n", "a", L"mail"}, {L"k.msg", storage, "-", L"mail"}, // not a storage after all
        {L"l.doc", "\xDB\xA5\x2D\0"s, "-", L"Word 2"}, {L"m.wpd", "\xFFWPC", "-", L"WordPerfect"},
        {L"eml", "Subject: a\r\n\r\n", "-", nullptr}, {L"n.docx", archive, "t", L"office archive"},
        {L"o.odt", qxtest::Build({{"META.XML", meta}}), "t", L"office archive"},
        {L"p.zip", archive + "x", "-", L"office archive", L"WRN: GetZIPFilenames: read error (no finalizer found)"},
        {L"q.XML",
            "<r:r xmlns:r='1' xmlns:cp='2' xmlns:dc='3'><cp:coreProperties>" + title + "</cp:coreProperties></r:r>",
            "t", L"XML"},
        {L"r.xml", "<a><b></a>", "-", L"XML", L"ERR: read() returned "}, {L"s.doc", message, "-", nullptr},
        {L"t.msg", mailLikeStorage, "text", L"mail", L"error opening storage"}, // read as a mail
    };
    for (const auto& file : files)
    {
        const String path = folder.Make(file.name, file.bytes);
        EXPECT_EQ(TitleOf(list, path), file.title) << String(file.name).NarrowText();
        const auto record = list.Get(path, 0);
        EXPECT_STREQ(record->reader, file.reader);
        EXPECT_TRUE(record->remark.View().starts_with(file.remark)) << record->remark.NarrowText();
        const bool hasFileTime = std::memcmp(&record->LastSaved, &record->fileTime, sizeof(SYSTEMTIME)) == 0;
        EXPECT_TRUE(hasFileTime || !record->accessible);
    }
    EXPECT_EQ(TitleOf(list, folder.Path()), "inaccessible"); // a folder
}

TEST(DocumentList, ManyThreads)
{
    const TempFolder folder;
    ExpectFirstInManyThreads(
        {folder.Make(L"1.htm", kFirst), folder.Make(L"2.htm", kFirst), folder.Make(L"3.htm", kFirst)}, 100, 0);
}

// A list without records has no thread. If a list has a thread, closing the list wakes it.
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
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
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

class DocumentsOnShares : public testing::Test
{
protected:
    const qxtest::OwnDrives _drives;
    const std::filesystem::path _share = _drives.MakeShare("server", "share");
};

// Simulates a server that doesn't answer: readings of "slow" files wait until Release.
class HangingServer : public DocumentsOnShares
{
protected:
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
    ~HangingServer() override
    {
        SetShareReading(nullptr);
        CloseHandle(released);
    }

    static void Release() { SetEvent(released); }
    static bool WaitForReadings(std::size_t count)
    {
        for (int i = 0; i < 1'000 && started < count; ++i)
            Sleep(10);
        return started == count;
    }

private:
    static inline std::atomic<std::size_t> started;
    static inline HANDLE released;
};

// Delays every open of the file while this object exists.
class OpeningsHeld
{
public:
    explicit OpeningsHeld(const std::filesystem::path& file)
        : _queue(fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC, O_RDONLY)),
          _works(_queue >= 0 && fanotify_mark(_queue, FAN_MARK_ADD, FAN_OPEN_PERM, AT_FDCWD, file.c_str()) == 0)
    {
    }
    OpeningsHeld(const OpeningsHeld&) = delete;
    OpeningsHeld& operator=(const OpeningsHeld&) = delete;
    ~OpeningsHeld() { close(_queue); }

    bool Works() const { return _works; }
    bool HoldsOne() const
    {
        pollfd events = {_queue, POLLIN, 0};
        return poll(&events, 1, 10'000) == 1;
    }

private:
    int _queue;
    bool _works;
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
    // A share that didn't answer once is not tried again.
    const IString back(L"\\\\server\\back");
    EXPECT_FALSE(IsShareUnreachable(back, true));
    EXPECT_TRUE(IsShareUnreachable(back, false));
    _drives.MakeShare("server", "back");
    EXPECT_TRUE(IsShareUnreachable(IString(L"\\\\SERVER\\Back"), false));
    EXPECT_FALSE(IsShareUnreachable(IString(L"\\\\server\\share"), false));
}

TEST_F(DocumentsOnShares, ReadByThreadsOfTheirOwn)
{
    std::ofstream(_share / "page.htm") << kFirst;
    clsDocuList list(0);
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\page.htm", 100), "first");
    EXPECT_EQ(list.Get(L"\\\\server\\share\\page.htm", 100)->resolvedPath.View(), L"\\\\server\\share\\page.htm");
    const TempFolder folder;
    const String link = folder.Make(L"a.lnk", qxtest::LinkOf({.share = R"(\\server\share)", .suffix = "page.htm"}));
    EXPECT_EQ(TitleOf(list, link, 100), "first");
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\none.htm", 100), "inaccessible");
    EXPECT_EQ(TitleOf(list, L"\\\\server\\missing\\page.htm", 100), "inaccessible");
}

TEST_F(DocumentsOnShares, ManyThreads)
{
    std::ofstream(_share / "page.htm") << kFirst;
    ExpectFirstInManyThreads({L"\\\\server\\share\\page.htm"}, 20, 100);
}

TEST_F(DocumentsOnShares, AFileThatDoesNotOpen)
{
    for (const char* const name : {"page.htm", "other.htm"})
        std::ofstream(_share / name) << kFirst;
    clsDocuList list(0);
    const OpeningsHeld held(_share / "page.htm");
    if (!held.Works())
        GTEST_SKIP() << "only root may delay openings, on kernels that allow it";
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\page.htm", 1), "inaccessible");
    EXPECT_TRUE(held.HoldsOne());
    EXPECT_EQ(TitleOf(list, L"\\\\server\\share\\other.htm", 100), "first");
}

TEST_F(HangingServer, LateResultsAreDropped)
{
    clsDocuList list(1'000);
    EXPECT_EQ(TitleOf(list, kSlow, 0), "inaccessible"); // the caller doesn't wait
    EXPECT_EQ(TitleOf(list, kQuick, 100), "from the server");
    EXPECT_TRUE(WaitForReadings(2));
    Release();
    Sleep(50);
    EXPECT_EQ(TitleOf(list, kSlow, 0), "inaccessible"); // the late result is dropped
}

TEST_F(HangingServer, TwentyReadersAtMost)
{
    clsDocuList list(0);
    for (std::size_t i = 0; i < clsDocuList::kMostReaders; ++i)
        list.Get(kSlow, 0);
    const auto last = std::async(std::launch::async, [&] { list.Get(kSlow, 0); });
    EXPECT_TRUE(WaitForReadings(clsDocuList::kMostReaders + 1));
    EXPECT_EQ(TitleOf(list, kQuick, 100), "from the server"); // a reader that has ended doesn't count
    EXPECT_EQ(last.wait_for(200ms), std::future_status::timeout);
    Release();
    last.wait();
}

TEST_F(HangingServer, ClosingWaitsForTheReaders)
{
    auto list = std::make_unique<clsDocuList>(0);
    list->Get(kSlow, 0);
    const auto closing = std::async(std::launch::async, [&] { list.reset(); });
    EXPECT_EQ(closing.wait_for(100ms), std::future_status::timeout);
    Release();
    closing.wait();
}

#endif
