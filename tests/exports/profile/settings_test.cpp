// Settings files that this project didn't make.
#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace profiletest;

namespace
{

// The entries of a source in its order, one a line: the number of sections around it, then "[name]" or "name=value".
// Reads the INI rules straight from the bytes: each section but the first is one list deeper than the one before it.
std::string EntriesByTheRules(const std::string& path)
{
    std::istringstream source(BytesOf(path));
    std::ostringstream entries;
    int sections = 0;
    for (std::string line; std::getline(source, line);)
    {
        line.erase(0, line.find_first_not_of(" \t"));
        while (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        if (sections == 0 && line[0] != '[')
            return ""; // the first line decides
        if (line.find_first_of("#;{") == 0)
            continue;
        if (line[0] == '}')
            throw std::runtime_error("a section with an end: no such file is among the data");
        if (line[0] == '[')
        {
            if (++sections > 1)
                entries << sections - 2 << " [" << line.substr(1, line.size() - 2) << "]\n";
            continue;
        }
        entries << sections - 1 << ' ' << (line.find('=') == std::string::npos ? line + "=" : line) << '\n';
    }
    return entries.str();
}

struct Walk
{
    std::string entries;
    int depth = 0;
};

int32_t Visit(HPROFJOB job, const wchar_t* name, const wchar_t* value, HPROFLIST child, void* context)
{
    Walk& walk = *static_cast<Walk*>(context);
    walk.entries += std::to_string(walk.depth) + " ";
    if (child == nullptr)
    {
        walk.entries += Utf8(name) + "=" + Utf8(value) + "\n";
        return 1;
    }
    walk.entries += "[" + Utf8(name) + "]\n";
    ++walk.depth;
    ProfEnumW(job, child, Visit, context);
    --walk.depth;
    return 1;
}

std::string EntriesOf(HPROFJOB job)
{
    Walk walk;
    ProfEnumW(job, nullptr, Visit, &walk);
    return walk.entries;
}

class ProfileSettings : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(ProfileSettings, LoadByTheIniRulesAndSurviveASave)
{
    const std::string path = std::string(QXUT_TEST_DATA "/settings/") + GetParam();
    const Job job(path);
    ASSERT_EQ(job.Error(), PROF_OK);
    const std::string entries = EntriesOf(job);
    EXPECT_EQ(entries, EntriesByTheRules(path));

    const TempFolder folder;
    ASSERT_EQ(job.Save(folder.Path("saved")), PROF_OK);
    EXPECT_EQ(EntriesOf(Job(folder.Path("saved"))), entries);
}

INSTANTIATE_TEST_SUITE_P(, ProfileSettings,
    testing::Values(
        "org.xfce.mousepad.desktop", "python3.11.desktop", "adwaita-index.theme", "php.ini-production", "smb.conf"),
    [](const testing::TestParamInfo<const char*>& test)
    {
        std::string name = test.param;
        for (char& c : name)
            c = isalnum(static_cast<unsigned char>(c)) ? c : '_';
        return name;
    });

// A few values by hand, against both readers being wrong together.
TEST(ProfileSettingsByHand, KnownValues)
{
    const Job php(QXUT_TEST_DATA "/settings/php.ini-production");
    EXPECT_EQ(Value(php, L"engine "), " On") << "blanks around the equals sign stay";
    EXPECT_EQ(Value(php, L"CLI Server/cli_server.color "), " On");
    EXPECT_EQ(
        Value(php, L"CLI Server/Date/filter/iconv/imap/intl/sqlite3/Pcre/Pdo/Pdo_mysql/pdo_mysql.default_socket"), "");

    const Job mousepad(QXUT_TEST_DATA "/settings/org.xfce.mousepad.desktop");
    EXPECT_EQ(Value(mousepad, L"Name"), "Mousepad");
    EXPECT_EQ(Value(mousepad, L"Name[ar]"), "\xD9\x85\xD8\xA7\xD9\x88\xD8\xB3 \xD8\xA8\xD8\xA7\xD8\xAF");
    EXPECT_EQ(Value(mousepad, L"Name[xx]"), "(none)");
}

TEST(ProfileFormData, ValuesThatAPdfToolExported)
{
    const Job job(std::string(QXUT_TEST_DATA) + "/forms/customer.xfdf");
    EXPECT_EQ(job.Error(), PROF_OK);
    EXPECT_EQ(Tree(job), "customer.name=J\xC3\xBCrgen <&> \"O'Neil\" \xE6\x97\xA5\xE6\x9C\xAC;"
                         "customer.address=  Line 1\r\nLine \t2;note=;agreed=Yes;");
}
