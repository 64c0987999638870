// Shortcuts to documents, and the guard that enters COM for them.
#include "docinfo/com_guard.h"
#include "docinfo/document_list.h"
#include "docinfo/shortcut.h"
#include "files/paths.h"
#include "module/module_paths.h"
#include "support/debug_lines.h"
#include "support/link_builder.h"
#include "support/own_settings.h"
#include "support/temp_folder.h"
#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr char kPage[] = "<head><title>title</title></head>";

// Returns the path with a drive: its own one, or Z:, which is the root of the file system.
std::string TargetPath(const String& path)
{
    const std::string narrow = path.NarrowText();
    return narrow[0] == '/' ? "Z:" + narrow : narrow;
}

// Returns S_OK if the thread has left COM.
HRESULT EnterAndLeave()
{
    const HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (SUCCEEDED(result))
        CoUninitialize();
    return result;
}

} // namespace

TEST(DocumentShortcuts, TargetIsRead)
{
    const TempFolder folder;
    const String link = folder.Make(L"a.LNK", LinkOf({.local = TargetPath(folder.Make(L"page.htm", kPage))}));
    clsDocuList list(0);
    const clsAutoRelease<clsDocu*> record = list.Get(link, 1);
    EXPECT_TRUE(record->accessible);
    EXPECT_EQ(TextOf(record->Title), "title");
    EXPECT_EQ(record->path, link);
    EXPECT_EQ(GetPathName(record->resolvedPath), L"page.htm");
    // The reader depends on the target's name, and a shortcut to a shortcut isn't followed.
    const clsAutoRelease<clsDocu*> shortcut = list.Get(folder.Make(L"b.lnk", LinkOf({.local = TargetPath(link)})), 1);
    EXPECT_TRUE(shortcut->accessible);
    EXPECT_EQ(GetPathExtension(shortcut->resolvedPath), L".lnk");
    EXPECT_EQ(TextOf(shortcut->Title), "-");
    EXPECT_EQ(EnterAndLeave(), S_OK);
}

TEST(DocumentShortcuts, WithoutTargetNothingIsRead)
{
    const TempFolder folder;
    const String page = folder.Make(L"page.htm", kPage);
    const std::string whole = LinkOf({.local = TargetPath(page)});
    for (const std::string& bytes : {LinkOf({.local = TargetPath(folder.Path(L"gone.htm"))}),
             LinkOf({.local = TargetPath(page), .headerFlags = 1}), whole.substr(0, 75), std::string(kPage)})
    {
        const String link = folder.Make(L"a.lnk", whole);
        clsDocuList list(0);
        EXPECT_TRUE(list.Get(link, 1)->accessible);
        MakeFile(link, bytes);
        EXPECT_FALSE(list.Get(link, 1)->accessible);
        EXPECT_EQ(Summary(*list.Get(link, 1)), "-|-|-|-|-|-|-|-");
    }
    EXPECT_TRUE(TargetOfShortcut(folder.Path(L"none.lnk")).IsEmpty());
    EXPECT_EQ(EnterAndLeave(), S_OK);
}

TEST(ComGuard, ModelOfTheSettings)
{
    const OwnSettings settings;
    String key = String(L"Software\\trelmo\\TRLMRG\\") + ProcessBaseName();
    key.MakeUpper();
    const auto enter = [](bool isUsable, HRESULT inside)
    {
        const clsCOMInitialize guard;
        EXPECT_EQ(guard.IsUsable(), isUsable);
        EXPECT_EQ(EnterAndLeave(), inside);
    };
    const auto set = [&](DWORD type, DWORD model)
    {
        EXPECT_TRUE(settings.Set(HKEY_LOCAL_MACHINE, L"ApartmentModel", type, &model, sizeof model, key.Text()));
    };
    enter(true, RPC_E_CHANGED_MODE);
    set(REG_DWORD, 999);
    enter(true, S_OK);
    set(REG_BINARY, 999);
    enter(true, RPC_E_CHANGED_MODE);
    set(REG_DWORD, 0);
    {
        const DebugLines lines;
        enter(true, RPC_E_CHANGED_MODE);
        EXPECT_EQ(lines.CountOf(L"differs from the forced one"), 1u);
    }
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    enter(false, S_FALSE);
    EXPECT_EQ(EnterAndLeave(), S_FALSE);
    CoUninitialize();
    EXPECT_EQ(EnterAndLeave(), S_OK);
}
