// Settings files from other projects.
#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace profiletest;

TEST(ProfileSettings, LoadByTheIniRulesAndSurviveASave)
{
    constexpr std::tuple<const char*, const wchar_t*, const char*> kCases[] = {
        {"python3.11.desktop", L"NoDisplay", "true"},
        {"org.xfce.mousepad.desktop", L"Name[ar]", "\xD9\x85\xD8\xA7\xD9\x88\xD8\xB3 \xD8\xA8\xD8\xA7\xD8\xAF"},
        {"org.xfce.mousepad.desktop", L"Desktop Action preferences/Exec", "mousepad --preferences"},
        {"adwaita-index.theme", L"ZipOverlay", "zip_overlay"},
        {"php.ini-production", L"CLI Server/cli_server.color ", " On"}, // blanks around the equals sign are preserved
        {"php.ini-production",
            L"CLI Server/Date/filter/iconv/imap/intl/sqlite3/Pcre/Pdo/Pdo_mysql/pdo_mysql.default_socket", ""},
        {"smb.conf", L"global", "(none)"}}; // the first line, a comment, decides
    for (const auto& [name, path, value] : kCases)
    {
        const Job job(std::string(QXUT_TEST_DATA "/settings/") + name);
        ASSERT_EQ(job.Error(), PROF_OK);
        EXPECT_EQ(Value(job, path), value) << name;
        const TempFolder folder;
        ASSERT_EQ(job.Save(folder.Path("saved")), PROF_OK);
        EXPECT_EQ(Tree(Job(folder.Path("saved"))), Tree(job));
    }
}

TEST(ProfileFormData, ValuesThatAPdfToolExported)
{
    const Job job(std::string(QXUT_TEST_DATA) + "/forms/customer.xfdf");
    EXPECT_EQ(job.Error(), PROF_OK);
    EXPECT_EQ(Tree(job), "customer.name=J\xC3\xBCrgen <&> \"O'Neil\" \xE6\x97\xA5\xE6\x9C\xAC;"
                         "customer.address=  Line 1\r\nLine \t2;note=;agreed=Yes;");
}
