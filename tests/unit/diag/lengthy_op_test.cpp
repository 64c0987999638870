#include "diag/lengthy_op.h"

#include "support/temp_folder.h"
#include "support/variable.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using namespace qx;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace
{

std::vector<std::string> controlCalls;
std::int64_t jobAnswer = 0;
std::int32_t abortAnswer = 0;

std::int64_t RecordCall(const char* name, std::int64_t number, const void* first, const void* second, std::int32_t last)
{
    std::string call = std::string(name).substr(3) + ' ' + std::to_string(number);
    for (const void* text : {first, second})
        if (text)
            call += " '" + std::string(String(static_cast<const wchar_t*>(text)).NarrowText()) + '\'';
    controlCalls.push_back(call + ' ' + std::to_string(last));
    return call.starts_with("JobOpenEx")       ? jobAnswer
           : call.starts_with("AbortDlgStart") ? 77
           : call.starts_with("AbortDlgCheck") ? abortAnswer
                                               : 0;
}

// A folder that alone is searched for the control library, beside the program's own.
class LengthyOp : public testing::Test
{
protected:
    LengthyOp()
    {
        controlCalls.clear();
        jobAnswer = 5;
        abortAnswer = 0;
        const String address(String::kFormatted, L"%p", reinterpret_cast<void*>(&RecordCall));
        sink = std::make_unique<qxtest::Variable>(L"QXUT_CONTROL_SINK", address.Text());
        SetDllDirectoryW(folder.Path().Text());
    }
    ~LengthyOp() override { SetDllDirectoryW(L""); }

    // Copies the library into the folder, without one function.
    void Install(const std::string& missing = "no function")
    {
        const std::filesystem::path from = QXUT_CONTROL_STUB;
        std::ifstream in(from, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(in), {}};
        // The last letter changes, which keeps the list of names in its order.
        std::string other = missing + '\0';
        other[missing.size() - 1] = '_';
        for (std::size_t at = 0; (at = bytes.find(missing + '\0', at)) != bytes.npos; ++at)
            bytes.replace(at, other.size(), other);
        std::ofstream(qxtest::NativePath(folder.Path()) / from.filename(), std::ios::binary) << bytes;
    }

    static void WorkToTheEnd()
    {
        clsLengthyOp work(L"first", L"second");
        work.SetText(L"more");
        work.SetProgress(50);
        wasAborted = work.CheckAbort();
    }

    qxtest::TempFolder folder;
    std::unique_ptr<qxtest::Variable> sink;
    static inline bool wasAborted = false;
};

constexpr const char* kEnd = "AbortDlgEnd 77 0";
constexpr const char* kCheck = "AbortDlgCheckAbort 77 0";
// The library is not in the process, so there is one more job.
const std::vector<std::string> allCalls = {"JobOpenEx 0 0", "JobOpenEx 0 0", "AbortDlgStart 0 'first' 'second' 6",
    "AbortDlgHWnd 77 0", "AbortDlgSetText 77 'second\nmore' -1", kCheck, "AbortDlgSetText 77 50", kCheck, kCheck, kEnd,
    "JobCloseEx 5 0", "JobCloseEx 5 0"};

} // namespace

TEST_F(LengthyOp, CallsInTheirOrder)
{
    Install();
    abortAnswer = -1;
    WorkToTheEnd();
    EXPECT_TRUE(wasAborted);
    EXPECT_THAT(controlCalls, ElementsAreArray(allCalls));
    EXPECT_EQ(GetModuleHandleW(L"qxct23.dll"), nullptr);

    controlCalls.clear();
    jobAnswer = 0; // asks for the older calls
    abortAnswer = 1;
    WorkToTheEnd();
    EXPECT_FALSE(wasAborted);
    EXPECT_THAT(std::vector(controlCalls.begin(), controlCalls.begin() + 3),
        ElementsAre("JobOpenEx 0 0", "JobOpenEx 0 0", "JobOpen 0 0"));
    EXPECT_THAT(
        std::vector(controlCalls.end() - 3, controlCalls.end()), ElementsAre(kEnd, "JobClose 0 0", "JobCloseEx 0 0"));
}

TEST_F(LengthyOp, ForeignCopyInTheProcess)
{
    Install();
    const HMODULE copy = LoadLibraryW(L"qxct23.dll");
    ASSERT_NE(copy, nullptr);
    SetDllDirectoryW(L"");
    WorkToTheEnd();
    EXPECT_FALSE(wasAborted);
    EXPECT_EQ(std::count(controlCalls.begin(), controlCalls.end(), "JobOpenEx 0 0"), 1);
    EXPECT_EQ(std::count(controlCalls.begin(), controlCalls.end(), "JobCloseEx 5 0"), 1);
    EXPECT_EQ(GetModuleHandleW(L"qxct23.dll"), copy);
    FreeLibrary(copy);
}

TEST_F(LengthyOp, WithoutTheLibraryEverythingIsAborted)
{
    WorkToTheEnd();
    EXPECT_TRUE(wasAborted);
    EXPECT_THAT(controlCalls, ElementsAre());
}

TEST_F(LengthyOp, WithoutOneOfItsFunctions)
{
    for (const std::string missing : {"CtlAbortDlgCheckAbort", "CtlAbortDlgEnd", "CtlAbortDlgHWnd",
             "CtlAbortDlgSetText", "CtlAbortDlgStart", "CtlJobClose", "CtlJobCloseEx", "CtlJobOpen", "CtlJobOpenEx"})
    {
        controlCalls.clear();
        Install(missing);
        WorkToTheEnd();
        EXPECT_EQ(wasAborted, missing == "CtlAbortDlgCheckAbort") << missing;
        std::vector<std::string> expected;
        for (std::string call : allCalls)
        {
            if (call.starts_with(missing.substr(3) + ' '))
                continue;
            const std::size_t dialog = call.find(" 77 ");
            if (missing == "CtlAbortDlgStart" && dialog != call.npos)
                call.replace(dialog, 4, " -1 ");
            expected.push_back(call);
        }
        if (missing == "CtlJobOpenEx") // then only the older calls remain
        {
            expected.insert(expected.begin(), "JobOpen 0 0");
            expected.resize(expected.size() - 2);
            expected.emplace_back("JobClose 0 0");
        }
        EXPECT_THAT(controlCalls, ElementsAreArray(expected)) << missing;
    }
}
