#include <qxut23/module.h>

#include "module/language.h"
#include "module/module_description.h"
#include "module/module_paths.h"
#include "module/version_block.h"
#include "support/peer_process.h"
#include "support/temp_folder.h"
#include "support/variable.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace qx;
using namespace qxtest;

namespace
{

const HMODULE library = GetModuleHandleW(L"qxUT23.dll");

} // namespace

TEST(ModuleExports, TheVersionIsThatOfTheVersionBlock)
{
    EXPECT_EQ(UtilGetVersion(QXUT_VERSION_ALL), 0x170002);
    EXPECT_EQ(UtilGetVersion(4), -1);
    EXPECT_EQ(UtilGetVersion(-1), -1);
    String version;
    version.Format(L"%d.%d.%d", UtilGetVersion(QXUT_VERSION_MAJOR), UtilGetVersion(QXUT_VERSION_MINOR),
        UtilGetVersion(QXUT_VERSION_PATCH));
    EXPECT_STREQ(version, L"23.2.0");
    const String path = ModulePath(library);
    EXPECT_STREQ(GetFileVersionValue(path, L"FileVersion"), version);
    EXPECT_STREQ(GetFileVersionValue(path, L"InternalName"), L"qxUT23");
    const String start = String(FileNameOf(path.View())).Upper() + L" " + version;
    EXPECT_EQ(GetModuleDescription(library).Left(start.Length()), start);
}

TEST(ModuleExports, TheManifestMakesAnActivationContext)
{
    ACTCTXW description = {};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
    description.hModule = library;
    description.lpResourceName = MAKEINTRESOURCEW(2);
    const HANDLE context = CreateActCtxW(&description);
    EXPECT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();
    ReleaseActCtx(context);
    description.lpResourceName = MAKEINTRESOURCEW(3);
    EXPECT_EQ(CreateActCtxW(&description), INVALID_HANDLE_VALUE);
}

TEST(ModuleExports, TheUsersLanguageCountsBeforeTheSystems)
{
    const std::int32_t before = UtilLanguageGet();
    ASSERT_EQ(UtilLanguageSet(0), 0);
    EXPECT_EQ(UtilLanguageGet(), LanguageCode(GetUserDefaultUILanguage()));
    for (const std::int32_t language : {48, -7})
    {
        EXPECT_EQ(UtilLanguageSet(language), 0);
        EXPECT_EQ(UtilLanguageGet(), language);
    }

    // A value of another type doesn't count as a choice.
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\trelmo\\Appearance", 0, KEY_ALL_ACCESS, &key), 0);
    EXPECT_EQ(RegSetValueExW(key, L"Language", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"6"), 4), 0);
    EXPECT_EQ(UtilLanguageGet(), LanguageCode(GetUserDefaultUILanguage()));
    RegDeleteValueW(key, L"Language");
    RegCloseKey(key);
    EXPECT_EQ(UtilLanguageGet(), before);
}

#ifndef _WIN32 // the system's message box waits for a user
TEST(ModuleExports, AFailedAssertionEndsTheProcess)
{
    const Variable answer(L"QXPLATFORM_MESSAGEBOX", L"retry");
    // On linux exit codes have only 8 bits.
    EXPECT_EQ(PeerProcess(L"module_peer", L"assert").Wait() & 0xFF, 0xFF);
}
#endif

TEST(ModuleExports, LoadsWithoutHomeRegistryOrTempFolder)
{
    const TempFolder folder;
    const String none = folder.Path(L"none");
    const Variable variables[] = {{L"HOME", nullptr}, {L"XDG_CONFIG_HOME", nullptr}, {L"QXPLATFORM_HOME", nullptr},
        {L"TMPDIR", none}, {L"TMP", none}, {L"TEMP", none}, {L"USERPROFILE", nullptr}, {L"APPDATA", nullptr},
        {L"LOCALAPPDATA", nullptr}};
    EXPECT_EQ(PeerProcess(L"module_peer", L"").Wait(), 0);
}
