#include "core/environment_type.h"

#include "core/module_paths.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

using namespace qx;
using qxtest::DebugLines;

namespace
{

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

TEST_F(Environment, NamesOfUsersAndPrograms)
{
    const struct
    {
        const wchar_t *user, *process;
        EnvironmentType expected;
    } cases[] = {{L"ASPNET", L"ANY", EnvironmentType::webServer}, {L"jane", L"aspnet_wp", EnvironmentType::webServer},
        {L"jane", L"IISEXPRESS", EnvironmentType::webServer}, {L"system", L"W3WP", EnvironmentType::webServer},
        {L"jane", L"W3WP2", EnvironmentType::unknown}, {L"jane", L"WEBDEV.WEBSERVER40", EnvironmentType::webServer},
        {L"jane", L"WEBDEV.WEBSERVE", EnvironmentType::unknown}, {L"System", L"ANY", EnvironmentType::service},
        {L"", L"", EnvironmentType::unknown}};
    for (const auto& c : cases)
        EXPECT_EQ(EnvironmentTypeOfNames(c.user, c.process), c.expected) << String(c.process).NarrowText();
}

TEST_F(Environment, GroupsOfTheToken)
{
    const std::vector<unsigned char> interactive = {1, 1, 0, 0, 0, 0, 0, 5, 4, 0, 0, 0};
    const std::vector<unsigned char> service = {1, 1, 0, 0, 0, 0, 0, 5, 6, 0, 0, 0};
    const std::vector<unsigned char> everyone = {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    const std::vector<unsigned char> longer = {1, 2, 0, 0, 0, 0, 0, 5, 4, 0, 0, 0, 1, 0, 0, 0};
    const std::vector<unsigned char> none = {1, 0, 0, 0, 0, 0, 0, 5};
    EXPECT_EQ(TypeOfGroups({everyone, interactive}), EnvironmentType::interactive);
    EXPECT_EQ(TypeOfGroups({service, interactive}), EnvironmentType::interactive);
    EXPECT_EQ(TypeOfGroups({everyone, service}), EnvironmentType::service);
    EXPECT_EQ(TypeOfGroups({longer, none}), EnvironmentType::service);
    EXPECT_EQ(TypeOfGroups({}), EnvironmentType::service);
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
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\trelmo", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        ERROR_SUCCESS);
    const auto set = [key](const String& names)
    {
        ForgetEnvironment();
        RegSetValueExW(key, L"NonInteractiveApps", 0, REG_SZ, reinterpret_cast<const BYTE*>(names.Text()),
            static_cast<DWORD>((names.Length() + 1) * sizeof(wchar_t)));
    };
    const bool isInteractive = GetOSEnvironmentType() == EnvironmentType::interactive;
    set(L"other;" + ProcessBaseName() + L"x");
    EXPECT_EQ(GetUIInteractionAllowed(), isInteractive);

    const DebugLines lines;
    String name = ProcessBaseName();
    name.MakeLower();
    set(L"other;" + name);
    EXPECT_FALSE(GetUIInteractionAllowed());
    EXPECT_STREQ(lines.Only(), L"suppressed UI interaction: application '" + ProcessBaseName() +
                                   L"' forced to be UI inactive by registry key");
    RegDeleteValueW(key, L"NonInteractiveApps");
    RegCloseKey(key);
}
#endif
