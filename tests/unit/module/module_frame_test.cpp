#include "module/module_frame.h"

#include "core/errors/assertion.h"
#include "core/system_values.h"
#include "core/ticks.h"
#include "module/environment_type.h"
#include "module/language.h"
#include "module/module_paths.h"
#include "support/debug_lines.h"
#include "support/filled.h"
#include "support/own_settings.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <tuple>
#include <vector>

using namespace qx;
using qxtest::DebugLines;

namespace
{

std::string done;

void Note(const char* step)
{
    done += step;
    done += LibraryHandle() ? " with the library, " : " without the library, ";
}

constexpr ModuleSteps kNoted = {
    .prepareStacks = [] { Note("stacks"); },
    .startChannels = [] { Note("start"); },
    .reportHandles = [] { Note("report"); },
    .closeChannels = [] { Note("close"); },
};

class ModuleFrame : public testing::Test
{
protected:
    ModuleFrame() { done.clear(); }
    ~ModuleFrame() override
    {
        DetachModule({});
        _set_invalid_parameter_handler(nullptr);
    }
};

EnvironmentType TypeOfGroups(std::vector<std::vector<unsigned char>> sids)
{
    std::vector<std::byte> memory(sizeof(TOKEN_GROUPS) + sids.size() * sizeof(SID_AND_ATTRIBUTES));
    auto& groups = *reinterpret_cast<TOKEN_GROUPS*>(memory.data());
    groups.GroupCount = static_cast<DWORD>(sids.size());
    for (std::size_t i = 0; i < sids.size(); ++i)
        groups.Groups[i].Sid = sids[i].data();
    return EnvironmentTypeOfGroups(groups);
}

class Environment : public testing::Test
{
protected:
    Environment() { ForgetEnvironment(); }
    ~Environment() override { ForgetEnvironment(); }
};

} // namespace

TEST_F(ModuleFrame, StepsRunWhileTheLibraryIsKnown)
{
    AttachModule(GetModuleHandleW(nullptr), kNoted);
    EXPECT_EQ(LibraryHandle(), GetModuleHandleW(nullptr));
    EXPECT_EQ(done, "stacks with the library, start with the library, ");
    DetachModule(kNoted);
    EXPECT_EQ(LibraryHandle(), nullptr);
    DetachModule(kNoted); // nothing is left to do
    EXPECT_EQ(
        done, "stacks with the library, start with the library, report with the library, close with the library, ");

    // A failing step must not prevent the following ones.
    done.clear();
    const ModuleSteps failing = {
        .prepareStacks = [] { throw 1; },
        .startChannels = [] { throw std::bad_alloc(); },
        .reportHandles = [] { throw 1; },
        .closeChannels = kNoted.closeChannels,
    };
    AttachModule(GetModuleHandleW(nullptr), failing);
    DetachModule(failing);
    EXPECT_EQ(done, "close with the library, ");
    EXPECT_EQ(LibraryHandle(), nullptr);
}

TEST(Assertion, TextIsCutAt80Characters)
{
    EXPECT_STREQ(AssertionText(L"a < b", L"f.cpp", 4000000000u), L"line 4000000000 in file f.cpp:\n\"a < b\"");
    const String expression = qxtest::Filled(L'x', 300), whole = String(L"line 1 in file f:\n\"") + expression;
    EXPECT_STREQ(AssertionText(expression, L"f", 1), whole.Left(80));
}

TEST_F(ModuleFrame, InvalidParametersOfTheRuntimeAreLogged)
{
    AttachModule(GetModuleHandleW(nullptr), {});
    {
        const DebugLines lines;
#ifndef _WIN32 // Wine's msvcrt.dll has no handlers, and mingw's replacement only stores them
        wchar_t path[4] = L"abc";
        EXPECT_NE(_wmakepath_s(path, 0, L"c", nullptr, nullptr, nullptr), 0);
        EXPECT_STREQ(lines.Only(), L"INVALID PARAMETER in CRT function detected - ignored");
#endif
    }
    const DebugLines lines;
    _set_invalid_parameter_handler(nullptr)(L"size > 0", L"wcscpy_s", L"copy.c", 17, 0);
    EXPECT_STREQ(lines.Only(), L"copy.c (line 17): size > 0: INVALID PARAMETER in 'wcscpy_s'");
}

TEST_F(ModuleFrame, TheFormerHandlerComesBackUnlessAnotherTookItsPlace)
{
    const _invalid_parameter_handler others[] = {
        [](const wchar_t*, const wchar_t*, const wchar_t*, unsigned, std::uintptr_t) {},
        [](const wchar_t*, const wchar_t*, const wchar_t*, unsigned, std::uintptr_t)
        {
            done += "called";
        }};
    for (const bool isTaken : {false, true})
    {
        _set_invalid_parameter_handler(others[0]);
        AttachModule(GetModuleHandleW(nullptr), {});
        if (isTaken)
            _set_invalid_parameter_handler(others[1]);
        DetachModule({});
        EXPECT_EQ(_set_invalid_parameter_handler(nullptr), others[isTaken ? 1 : 0]);
    }
}

TEST_F(ModuleFrame, NamesOfTheProgram)
{
    AttachModule(GetModuleHandleW(nullptr), {});
    const ModulePaths& paths = ProcessPaths();
    EXPECT_STREQ(paths.baseName, L"CORE_MODULE_TEST");
    EXPECT_EQ(paths.file.Left(paths.baseName.Length()), paths.baseName);
    EXPECT_EQ(paths.directory + paths.file, paths.path);
    EXPECT_EQ(paths.path, LibraryPaths().path);
    EXPECT_EQ(paths.path, ModulePath(nullptr).Upper());
}

TEST_F(Environment, NamesOfUsersAndPrograms)
{
    const std::tuple<const wchar_t*, const wchar_t*, EnvironmentType> cases[] = {
        {L"ASPNET", L"ANY", EnvironmentType::WebServer}, {L"jane", L"aspnet_wp", EnvironmentType::WebServer},
        {L"jane", L"IISEXPRESS", EnvironmentType::WebServer}, {L"system", L"W3WP", EnvironmentType::WebServer},
        {L"jane", L"W3WP2", EnvironmentType::Unknown}, {L"jane", L"WEBDEV.WEBSERVER40", EnvironmentType::WebServer},
        {L"jane", L"WEBDEV.WEBSERVE", EnvironmentType::Unknown}, {L"System", L"ANY", EnvironmentType::Service},
        {L"", L"", EnvironmentType::Unknown}};
    for (const auto& [user, process, expected] : cases)
        EXPECT_EQ(EnvironmentTypeOfNames(user, process), expected) << String(process).NarrowText();
}

TEST_F(Environment, GroupsOfTheToken)
{
    const std::vector<unsigned char> interactive = {1, 1, 0, 0, 0, 0, 0, 5, 4, 0, 0, 0};
    const std::vector<unsigned char> service = {1, 1, 0, 0, 0, 0, 0, 5, 6, 0, 0, 0};
    const std::vector<unsigned char> everyone = {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    const std::vector<unsigned char> longer = {1, 2, 0, 0, 0, 0, 0, 5, 4, 0, 0, 0, 1, 0, 0, 0};
    const std::vector<unsigned char> none = {1, 0, 0, 0, 0, 0, 0, 5};
    EXPECT_EQ(TypeOfGroups({everyone, interactive}), EnvironmentType::Interactive);
    EXPECT_EQ(TypeOfGroups({service, interactive}), EnvironmentType::Interactive);
    EXPECT_EQ(TypeOfGroups({everyone, service}), EnvironmentType::Service);
    EXPECT_EQ(TypeOfGroups({longer, none}), EnvironmentType::Service);
    EXPECT_EQ(TypeOfGroups({}), EnvironmentType::Service);
}

#ifndef _WIN32 // the layer's session has no screen
TEST_F(Environment, NobodyIsThereWithoutAScreen)
{
    const DebugLines lines;
    EXPECT_FALSE(GetUIInteractionAllowed());
    EXPECT_FALSE(GetUIInteractionAllowed());
    EXPECT_STREQ(lines.Only(), L"suppressed UI interaction: invisible WindowStation");
}
#else
TEST_F(Environment, TheRegistryCanSilenceAProgram)
{
    const qxtest::OwnSettings settings;
    const auto set = [&settings](const String& names)
    {
        ForgetEnvironment();
        EXPECT_TRUE(settings.Set(HKEY_LOCAL_MACHINE, L"NonInteractiveApps", names));
    };
    const bool isInteractive = GetOSEnvironmentType() == EnvironmentType::Interactive;
    set(L"other;" + ProcessBaseName() + L"x");
    EXPECT_EQ(GetUIInteractionAllowed(), isInteractive);

    const DebugLines lines;
    String name = ProcessBaseName();
    name.MakeLower();
    set(L"other;" + name);
    EXPECT_FALSE(GetUIInteractionAllowed());
    EXPECT_STREQ(lines.Only(), L"suppressed UI interaction: application '" + ProcessBaseName() +
                                   L"' forced to be UI inactive by registry key");
}
#endif

TEST(Ticks, AWrapOfTheCounterIsARound)
{
    static DWORD counter;
    WrappingTicks ticks([] { return counter; });
    for (const unsigned long long expected :
        {0xFFFFFFFFull, 0xFFFFFFFFull, 0x100000000ull, 0x190000000ull, 0x28FFFFFFFull})
    {
        counter = static_cast<DWORD>(expected);
        EXPECT_EQ(ticks.Now(), expected);
    }
}

TEST(Language, CodesBySublanguageAndByLanguage)
{
    const std::tuple<unsigned, unsigned, int> cases[] = {{9, 1, 1}, {7, 1, 0}, {7, 2, 0}, {7, 0, 0}, // English, German
        {4, 2, 9}, {4, 1, 48}, {4, 3, 1}, {4, 0, 1},          // Chinese only with two
        {10, 9, 130}, {10, 1, 37}, {22, 1, 129}, {22, 2, 31}, // Spanish, Portuguese
        {26, 3, 36}, {26, 2, 42}, {26, 1, 10}, {26, 0, 10},   // Croatian and Serbian
        {1, 1, 2}, {19, 1, 13}, {56, 1, 15}, {0, 1, 1}, {23, 1, 1}, {57, 1, 1}, {0x3FF, 0x3F, 1}};
    for (const auto& [primary, sublanguage, code] : cases)
        EXPECT_EQ(LanguageCode(static_cast<LANGID>(sublanguage << 10 | primary)), code)
            << primary << ", " << sublanguage;
}
