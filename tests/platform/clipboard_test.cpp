// The clipboard between threads and processes.
#include "platform/own_registry.h"
#include "system_support.h"

#include <thread>

#ifndef _WIN32 // for a second process
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace qxtest;

namespace
{

class Clipboard : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(OpenClipboard(nullptr) && EmptyClipboard() && CloseClipboard()); }

    const std::string _home = OwnRegistryFolder(); // created before the format is registered
    const UINT _format = RegisterClipboardFormatW(L"qxplatform test");
};

} // namespace

TEST_F(Clipboard, FormatsAreKnownByNameWithoutCase)
{
    const UINT other = RegisterClipboardFormatW(L"qxplatform test \x00E4");
    EXPECT_GE(_format, 0xC000u);
    EXPECT_GE(other, 0xC000u);
    EXPECT_NE(other, _format);
    EXPECT_EQ(RegisterClipboardFormatW(L"QXPLATFORM Test"), _format);
    EXPECT_EQ(RegisterClipboardFormatW(L"qxplatform test \x00C4"), other);
    EXPECT_ERROR(ERROR_INVALID_NAME, RegisterClipboardFormatW(L""));
}

TEST_F(Clipboard, BelongsToTheThreadThatOpenedIt)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 4);
    EXPECT_ERROR(ERROR_CLIPBOARD_NOT_OPEN, SetClipboardData(_format, block) != nullptr);
    GlobalFree(block);
    EXPECT_ERROR(ERROR_CLIPBOARD_NOT_OPEN, GetClipboardData(_format) != nullptr);
    EXPECT_ERROR(ERROR_CLIPBOARD_NOT_OPEN, EmptyClipboard());
    EXPECT_ERROR(ERROR_CLIPBOARD_NOT_OPEN, CloseClipboard());

    if (!kIsLayer)
        return; // the system distinguishes callers by their windows and admits all callers without one
    ASSERT_TRUE(OpenClipboard(nullptr));
    std::thread(
        []
        {
            EXPECT_ERROR(ERROR_ACCESS_DENIED, OpenClipboard(nullptr));
            EXPECT_ERROR(ERROR_CLIPBOARD_NOT_OPEN, CloseClipboard());
        })
        .join();
    EXPECT_TRUE(CloseClipboard());
}

#ifndef _WIN32 // on windows the system decides what the end of a process releases
TEST_F(Clipboard, EndOfAProcessGivesItBack)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(OpenClipboard(nullptr) ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(OpenClipboard(nullptr));
    EXPECT_TRUE(CloseClipboard());
}
#endif
