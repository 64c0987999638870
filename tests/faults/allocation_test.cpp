// Makes each allocation of an operation fail in turn. The operation must report the failure, leave nothing behind and
// not end the process.
#include <qxut23/archives.h>
#include <qxut23/breakpoints.h>
#include <qxut23/jobs.h>
#include <qxut23/markup.h>
#include <qxut23/packed_text.h>
#include <qxut23/page_text.h>
#include <qxut23/profile.h>
#include <qxut23/profile_files.h>
#include <qxut23/zip.h>

#include "faults/failing_allocations.h"
#include "support/test_jobs.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <sys/wait.h>
#include <unistd.h>

using namespace faulttest;

namespace
{

// The result that an operation reported, compared with its effect.
enum class Outcome
{
    Done,
    Failed,
    Lied, // reported success although a part was missing
};

using Operation = Outcome (*)();

// Ends the failures and compares what an operation reported with its effect.
template <class Check>
Outcome OutcomeOf(bool isDone, Check isRight)
{
    FailAllocation(0);
    return !isDone ? Outcome::Failed : isRight() ? Outcome::Done : Outcome::Lied;
}

// The paths used by the test, converted in advance so that no allocation is needed later.
struct Paths
{
    Paths()
    {
        char name[] = "/tmp/qxut-allocations-XXXXXX";
        folder = mkdtemp(name);
        std::ofstream(folder + "/in") << "[/]\n {\n a=1\n [list]\n  {\n  b=2\n  c=a longer text of a value\n  }\n }\n";
        std::ofstream(folder + "/member") << std::string(5000, 'm');
        const std::pair<wchar_t*, const char*> targets[] = {
            {in, "/in"}, {out, "/out"}, {member, "/member"}, {zip, "/zip"}, {extracted, "/extracted"}};
        for (const auto& [target, file] : targets)
        {
            const std::string path = folder + file;
            *std::copy(path.begin(), path.end(), target) = 0;
        }
        std::filesystem::create_directory(folder + "/extracted");
        setenv("QXPLATFORM_HOME", folder.c_str(), 1);
    }
    ~Paths() { std::filesystem::remove_all(folder); }

    std::string folder;
    wchar_t in[100], out[100], member[100], zip[100], extracted[100];
};

Paths* paths = nullptr;

bool Reads(const wchar_t* profile)
{
    const HPROFJOB job = ProfJobOpenW(profile);
    QXWCHAR value[40] = {};
    const bool isRight = job != nullptr && ProfGetError(job) == PROF_OK &&
                         ProfGetStringW(job, nullptr, L"list/c", value, 40, L"") > 0 &&
                         std::wstring_view(value) == L"a longer text of a value";
    ProfJobClose(job);
    return isRight;
}

Outcome Profile()
{
    const HPROFJOB job = ProfJobOpenW(paths->in);
    if (job == nullptr)
        return Outcome::Failed;
    const bool isRead = ProfGetError(job) == PROF_OK;
    const bool isSaved = isRead && ProfSaveW(job, paths->out, 0) == PROF_OK;
    ProfJobClose(job);
    return OutcomeOf(isSaved, [] { return Reads(paths->out); });
}

Outcome Pool()
{
    qxtest::JobCounts counts;
    qxtest::TestJob first(counts), second(counts);
    qxtest::TestHost host{qxtest::CountAndAnswer(counts, 0)};
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(2, L"pool");
    if (pool == nullptr)
        return Outcome::Failed;
    int added = 0;
    for (qxtest::TestJob* const job : {&first, &second})
        added += UtilThreadPoolAdd(pool, L"job", reinterpret_cast<IUnknown*>(job), &host) == 0;
    const bool isFinal = UtilThreadPoolFinalize(pool, &host) == 0;
    UtilThreadPoolClose(pool);
    FailAllocation(0);
    if (isFinal && counts.runs != added)
        return Outcome::Lied;
    return isFinal && added == 2 ? Outcome::Done : Outcome::Failed;
}

bool IsExtracted()
{
    std::ifstream file(paths->folder + "/extracted/member");
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return bytes == std::string(5000, 'm');
}

Outcome Archive()
{
    bool isDone = false;
    if (const HZIPFILE zip = UtilZIPCreate(paths->zip, L"comment"))
    {
        isDone = UtilZIPAppend(zip, paths->member, L"", L"member") == QXUT_ZIP_OK;
        isDone = UtilZIPClose(zip) == QXUT_ZIP_OK && isDone;
    }
    try
    {
        isDone = QxExtractZip(paths->zip, paths->extracted, 0, nullptr, nullptr, nullptr) == QXUT_EXTRACT_OK && isDone;
        isDone = UtilExtractZip(paths->zip, paths->extracted) == 1 && isDone; // throws on failure, as documented
    }
    catch (const std::exception&)
    {
        isDone = false;
    }
    return OutcomeOf(isDone, IsExtracted);
}

Outcome Embedded()
{
    const HPROFJOB job = ProfJobOpenW(nullptr);
    if (job == nullptr)
        return Outcome::Failed;
    ProfAppendFilesW(job, nullptr, paths->member, L"key");
    const bool isDone = QxProfExtractFiles(job, nullptr, paths->extracted, L"key", nullptr, nullptr) == 1;
    ProfJobClose(job);
    return OutcomeOf(isDone, IsExtracted);
}

Outcome Unpacking()
{
    const auto receive = [](void*, const void* data, std::uint32_t size) -> std::int32_t
    {
        return std::string_view(static_cast<const char*>(data), size) == "some text that is packed, packed, packed";
    };
    const std::int32_t result = QxUnpackText(
        L"@2@KAAAAFF2WF9QYWNrZWQAeNorzs9NVShJrShRKMlILFHILFYoSEzOTk3RQaMBKv4OVw==", nullptr, receive, nullptr);
    return OutcomeOf(result != QXUT_UNPACK_NO_MEMORY, [=] { return result == QXUT_UNPACK_OK; });
}

Outcome Page()
{
    BSTR text = nullptr;
    const std::int32_t result =
        QxConvertHtml2PlainText(L"<p>a &lt; b<ul><li>one<li>two</ul><table><tr><td>x<td>y</table>", &text, 0);
    const bool isRight = text != nullptr && std::wstring_view(text).find(L"a < b") == 0;
    SysFreeString(text);
    return OutcomeOf(result != QXUT_PAGE_NO_MEMORY, [=] { return result == QXUT_PAGE_OK && isRight; });
}

Outcome Document()
{
    // These functions have no result code. A failure leaves the text null.
    BSTR html = nullptr, text = nullptr;
    SetLastError(0);
    UtilConvertText2HTML(L"a < b\r\n\u20AC", &html, 0);
    if (html != nullptr)
        UtilConvertHtml2PlainText(html, &text, 0);
    const bool isReported = GetLastError() == ERROR_NOT_ENOUGH_MEMORY;
    const bool isThere = text != nullptr && SysStringLen(text) > 6;
    SysFreeString(html);
    SysFreeString(text);
    return OutcomeOf(isThere || !isReported, [=] { return isThere; });
}

// No breakpoint of this size can be set, but the call returns a handle nevertheless.
Outcome Breakpoint()
{
    std::int32_t slot = -1;
    const HDATABP breakpoint = UtilSetDataBP(0x1000, 3, 1);
    if (breakpoint != nullptr)
        std::memcpy(&slot, breakpoint, sizeof slot);
    UtilRemoveDataBP(breakpoint);
    return OutcomeOf(breakpoint != nullptr, [=] { return slot == -1; });
}

class Allocations : public testing::TestWithParam<std::pair<const char*, Operation>>
{
protected:
    void SetUp() override { paths = new Paths; }
    void TearDown() override { delete std::exchange(paths, nullptr); }
    static Outcome Run(long number, bool also)
    {
        FailAllocation(number, also);
        const Outcome outcome = GetParam().second();
        FailAllocation(0);
        return outcome;
    }
    static constexpr long kMost = 100'000;
};

// Each attempt runs in a new process, so that allocations that happen only at the first use fail too.
TEST_P(Allocations, FailAtTheFirstUse)
{
    for (const bool also : {false, true})
    {
        bool hasReached = true;
        for (long number = 1; hasReached && number < kMost; ++number)
        {
            const pid_t child = fork();
            if (child == 0)
            {
                alarm(60);
                FailAllocation(number, also);
                const Outcome outcome = GetParam().second();
                // The operation has already ended the failures; HasFailed() still returns true.
                _exit(outcome == Outcome::Lied ? 9 : HasFailed() ? 1 : 0);
            }
            int status = 0;
            waitpid(child, &status, 0);
            ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1)
                << "allocation " << number << (also ? " and all after it" : "") << ": status " << std::hex << status;
            hasReached = WEXITSTATUS(status) == 1;
        }
        EXPECT_FALSE(hasReached);
    }
}

TEST_P(Allocations, FailWithoutALeak)
{
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(Run(0, false), Outcome::Done); // makes the allocations that remain, such as caches
    for (const bool also : {false, true})
        for (long number = 1;; ++number)
        {
            Run(number, also); // refills caches that an earlier failure emptied, and stores the failure's text
            Outcome outcome = Outcome::Done;
            bool hasFailed = false;
            long left = 1;
            // With several threads, the failure may hit a thread that hasn't stored a failure text yet. Its new text
            // remains allocated. A real leak occurs in every attempt.
            for (int attempt = 0; attempt < 5 && left > 0; ++attempt)
            {
                const long before = LiveBlocks();
                FailAllocation(number, also);
                outcome = GetParam().second();
                hasFailed = HasFailed();
                FailAllocation(0);
                EXPECT_NE(outcome, Outcome::Lied) << "allocation " << number;
                // A thread frees its last blocks only after it counts as ended.
                for (int i = 0; i < 100 && LiveBlocks() > before; ++i)
                    Sleep(5);
                left = LiveBlocks() - before;
            }
            EXPECT_LE(left, 0) << "allocation " << number << (also ? " and all after it" : "");
            if (!hasFailed)
            {
                EXPECT_EQ(outcome, Outcome::Done);
                break;
            }
            ASSERT_LT(number, kMost);
        }
}

INSTANTIATE_TEST_SUITE_P(Of, Allocations,
    testing::Values(std::pair("Profile", &Profile), std::pair("Pool", &Pool), std::pair("Archive", &Archive),
        std::pair("Document", &Document), std::pair("Embedded", &Embedded), std::pair("Unpacking", &Unpacking),
        std::pair("Page", &Page), std::pair("Breakpoint", &Breakpoint)),
    [](const testing::TestParamInfo<std::pair<const char*, Operation>>& parameter)
    { return std::string(parameter.param.first); });

} // namespace
