// Profiles on the clipboard, which all processes share.
#include "exports/profile/support.h"
#include "support/peer_process.h"

#include <gtest/gtest.h>

using namespace profiletest;

namespace
{

// Replaces the contents of the clipboard by a text.
void PrepareClipboard()
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 8);
    ASSERT_TRUE(OpenClipboard(nullptr));
    ASSERT_TRUE(EmptyClipboard());
    EXPECT_NE(SetClipboardData(CF_TEXT, block), nullptr);
    ASSERT_TRUE(CloseClipboard());
}

// Returns the first `size` bytes of the block, because the system may round up its size.
std::string BlockOf(UINT format, std::size_t size)
{
    EXPECT_TRUE(OpenClipboard(nullptr));
    const HANDLE block = GetClipboardData(format);
    std::string bytes;
    if (block != nullptr)
        bytes.assign(static_cast<const char*>(GlobalLock(block)), GlobalSize(block));
    GlobalUnlock(block);
    CloseClipboard();
    return bytes.substr(0, size);
}

} // namespace

TEST(ProfileClipboard, HoldsTheImageAndANotice)
{
    PrepareClipboard();
    EXPECT_EQ(ProfIsClipboardDataAvailable(), 0);
    const Job none(ProfJobOpenClipboard(nullptr));
    EXPECT_EQ(none.Error(), PROF_ERR_CANNOT_READ);
    EXPECT_EQ(Tree(none), "");

    const Job job;
    ProfSetStringW(job, nullptr, L"l/a", L"1");
    EXPECT_EQ(ProfSaveToClipboard(job, nullptr, PROF_SAVE_PACKED), PROF_OK) << "never packed";
    EXPECT_EQ(ProfIsClipboardDataAvailable(), 1);
    EXPECT_EQ(Tree(Job(ProfJobOpenClipboard(nullptr))), "[l]{a=1;}");
    const std::string image = Utf16File(L"[/]\r\n {\r\n [l]\r\n  {\r\n  a=1\r\n  }\r\n }\r\n") + '\0';
    EXPECT_EQ(BlockOf(RegisterClipboardFormatW(L"QvxProfCBFormat"), image.size()), image);
    EXPECT_EQ(BlockOf(CF_TEXT, 20), std::string("PROF data available\0", 20));
    EXPECT_EQ(ProfSaveToClipboard(nullptr, nullptr, 0), PROF_OK);

    ProfEmptyList(job, nullptr);
    EXPECT_EQ(ProfSaveToClipboard(job, nullptr, 0), PROF_OK);
    const Job empty(ProfJobOpenClipboard(nullptr));
    EXPECT_EQ(empty.Error(), PROF_OK);
    EXPECT_EQ(Tree(empty), "");
}

TEST(ProfileClipboard, AnotherProcessPastes)
{
    const TempFolder folder;
    PrepareClipboard();
    const Job job;
    ProfSetStringW(job, nullptr, L"Gr\u00F6\u00DFe", L"\x01\x2400\u20AC");
    ASSERT_EQ(ProfSaveToClipboard(job, nullptr, 0), PROF_OK);
    qxtest::PeerProcess peer(L"profile_peer", Wide("paste \"" + folder.Path("pasted") + "\""));
    EXPECT_EQ(peer.Wait(), 0);
    EXPECT_EQ(Tree(Job(folder.Path("pasted"))), Tree(job));
}

// Not on Windows, which recognises who opened the clipboard by the window. Without windows, the peer would be admitted.
#ifndef _WIN32
TEST(ProfileClipboard, ThatSomeoneElseHasIsNeitherReadNorWritten)
{
    PrepareClipboard();
    ASSERT_TRUE(OpenClipboard(nullptr));
    qxtest::PeerProcess peer(L"profile_peer", L"paste unused");
    EXPECT_EQ(peer.Wait(), -PROF_ERR_CANNOT_READ);
    qxtest::PeerProcess copier(L"profile_peer", L"copy");
    EXPECT_EQ(copier.Wait(), -PROF_ERR_CANNOT_WRITE);
    CloseClipboard();
    EXPECT_EQ(ProfIsClipboardDataAvailable(), 0);
}
#endif
