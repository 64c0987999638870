// Files that this project didn't make.
#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace profiletest;

namespace
{

// Reads the INI rules straight from the bytes: each section but the first is one list deeper than the one before it.
std::string TreeByTheRules(const std::string& path)
{
    std::istringstream source(BytesOf(path));
    std::string tree;
    int sections = 0;
    for (std::string line; std::getline(source, line);)
    {
        line.erase(0, line.find_first_not_of(" \t"));
        while (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || (sections != 0 && line.find_first_of("#;{") == 0))
            continue;
        if (line[0] != '[' && sections == 0)
            return ""; // the first line decides
        if (line[0] == '}')
            throw std::runtime_error("a section with an end: no such file is among the data");
        if (line[0] != '[')
            tree += (line.find('=') == std::string::npos ? line + "=" : line) + ";";
        else if (++sections > 1)
            tree += line + "{";
    }
    return tree + std::string(sections > 1 ? static_cast<size_t>(sections - 1) : 0, '}');
}

} // namespace

TEST(ProfileSettings, LoadByTheIniRulesAndSurviveASave)
{
    for (const char* name :
        {"org.xfce.mousepad.desktop", "python3.11.desktop", "adwaita-index.theme", "php.ini-production", "smb.conf"})
    {
        SCOPED_TRACE(name);
        const std::string path = std::string(QXUT_TEST_DATA "/settings/") + name;
        const Job job(path);
        ASSERT_EQ(job.Error(), PROF_OK);
        EXPECT_EQ(Tree(job), TreeByTheRules(path));
        const TempFolder folder;
        ASSERT_EQ(job.Save(folder.Path("saved")), PROF_OK);
        EXPECT_EQ(Tree(Job(folder.Path("saved"))), Tree(job));
    }
    // A few values by hand, against both readers being wrong together.
    const Job php(QXUT_TEST_DATA "/settings/php.ini-production");
    EXPECT_EQ(Value(php, L"CLI Server/cli_server.color "), " On") << "blanks around the equals sign stay";
    EXPECT_EQ(
        Value(php, L"CLI Server/Date/filter/iconv/imap/intl/sqlite3/Pcre/Pdo/Pdo_mysql/pdo_mysql.default_socket"), "");
    const Job mousepad(QXUT_TEST_DATA "/settings/org.xfce.mousepad.desktop");
    EXPECT_EQ(Value(mousepad, L"Name[ar]"), "\xD9\x85\xD8\xA7\xD9\x88\xD8\xB3 \xD8\xA8\xD8\xA7\xD8\xAF");
}

TEST(ProfileFormData, ValuesThatAPdfToolExported)
{
    const Job job(std::string(QXUT_TEST_DATA) + "/forms/customer.xfdf");
    EXPECT_EQ(job.Error(), PROF_OK);
    EXPECT_EQ(Tree(job), "customer.name=J\xC3\xBCrgen <&> \"O'Neil\" \xE6\x97\xA5\xE6\x9C\xAC;"
                         "customer.address=  Line 1\r\nLine \t2;note=;agreed=Yes;");
}
