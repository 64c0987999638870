// Access lists of files, changed step by step as programs do. setfacl prepares the lists, and getfacl reads what the
// layer has stored.
#include "system_support.h"

#include <aclapi.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

#ifndef _WIN32 // for the tests of the layer
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace qxtest;

namespace
{

constexpr SECURITY_INFORMATION kAccessList = DACL_SECURITY_INFORMATION;

// Returns the error of the first step that fails, as "step: error", or an empty text.
std::string SetRights(Text path, Text account, DWORD permissions, DWORD inheritance)
{
    PACL list = nullptr;
    PACL changed = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::string step = "get: ";
    DWORD error =
        GetNamedSecurityInfoW(path, SE_FILE_OBJECT, kAccessList, nullptr, nullptr, &list, nullptr, &descriptor);
    if (error == ERROR_SUCCESS)
    {
        step = "entries: ";
        EXPLICIT_ACCESS_W access{};
        BuildExplicitAccessWithNameW(&access, account.data(), permissions, SET_ACCESS, inheritance);
        error = SetEntriesInAclW(1, &access, list, &changed);
    }
    if (error == ERROR_SUCCESS)
    {
        step = "set: ";
        error = SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, changed, nullptr);
    }
    EXPECT_EQ(LocalFree(changed), nullptr);
    EXPECT_EQ(LocalFree(descriptor), nullptr);
    return error == ERROR_SUCCESS ? std::string() : step + std::to_string(error);
}

TEST(Security, RightsOfTheUserAreSet)
{
    const Folder folder;
    const Text path = folder / L"file";
    MakeFile(path, "content");
    WCHAR user[257] = {};
    DWORD userSize = 257;
    ASSERT_TRUE(GetUserNameW(user, &userSize));
    EXPECT_EQ(SetRights(path, user, GENERIC_READ | GENERIC_WRITE, NO_INHERITANCE), "");
    EXPECT_EQ(BytesOf(path), "content");
    EXPECT_EQ(SetRights(folder / L"missing", user, GENERIC_READ, NO_INHERITANCE), "get: 2");
}

#ifndef _WIN32 // Wine keeps only the mode of access lists

// Returns the entries in getfacl's short form, separated by spaces. Default entries begin with "d".
std::string ListOf(const std::string& path)
{
    const std::string command =
        "getfacl -cEp '" + path + "' | sed -E 's/^(d?)(efault:)?(.)[a-z]*/\\1\\3/' | xargs echo -n";
    std::array<char, 1000> list{};
    FILE* const pipe = popen(command.c_str(), "r");
    EXPECT_NE(fgets(list.data(), list.size(), pipe), nullptr);
    pclose(pipe);
    return list.data();
}

class SecurityOfTheLayer : public testing::Test
{
protected:
    void SetUp() override
    {
        MakeFile(folder / L"probe");
        if (std::system(("setfacl -m u:daemon:r '" + native + "/probe' 2>/dev/null").c_str()) != 0)
            GTEST_SKIP() << "setfacl is missing, or the temp folder's file system has no access lists";
    }

    const Folder folder;
    const std::string native = folder.path().Narrow();
};

struct ListCase
{
    const char* prepared; // arguments of setfacl
    const char* account;  // empty for the owner
    DWORD permissions;
    DWORD inheritance;
    const char* list;
};

// daemon is user 1 and bin user 2, games is a user and a group, staff is only a group.
constexpr ListCase kFiles[] = {
    {"", "daemon", GENERIC_READ, 0, "u::rw- u:daemon:r-- g::r-- m::r-- o::---"},
    {"", "daemon", FILE_GENERIC_WRITE, 0, "u::rw- u:daemon:-w- g::r-- m::rw- o::---"},
    {"", "daemon", GENERIC_ALL, 3, "u::rw- u:daemon:rwx g::r-- m::rwx o::---"},
    {"", "daemon", FILE_EXECUTE | FILE_APPEND_DATA, 0, "u::rw- u:daemon:-wx g::r-- m::rwx o::---"},
    {"", "daemon", 0, 0, "u::rw- u:daemon:--- g::r-- m::r-- o::---"},
    {"", "games", GENERIC_READ, 0, "u::rw- u:games:r-- g::r-- m::r-- o::---"},
    {"", "staff", GENERIC_READ, 0, "u::rw- g::r-- g:staff:r-- m::r-- o::---"},
    {"", "", GENERIC_READ, 0, "u::r-- g::r-- o::---"},
    // The account's previous entry is replaced; a mask never shrinks.
    {"-m u:daemon:rwx", "daemon", GENERIC_READ, 0, "u::rw- u:daemon:r-- g::r-- m::rwx o::---"},
    // Rights that the mask withheld stay withheld when the mask grows.
    {"-m u:bin:rwx,g::rw,m::r", "daemon", GENERIC_WRITE, 0, "u::rw- u:daemon:-w- u:bin:r-x g::r-- m::rw- o::---"},
};
constexpr ListCase kFolders[] = {
    {"", "daemon", GENERIC_READ, 0, "u::rwx u:daemon:r-x g::r-x m::r-x o::---"},
    {"", "daemon", GENERIC_READ, 1,
        "u::rwx u:daemon:r-x g::r-x m::r-x o::--- du::rwx du:daemon:r-x dg::r-x dm::r-x do::---"},
    {"", "", FILE_GENERIC_READ, 3, "u::r-x g::r-x o::--- du::r-x du:OWNER:r-x dg::r-x dm::r-x do::---"},
    {"-d -m u:bin:r,g::-,o::r", "daemon", GENERIC_WRITE, 2,
        "u::rwx u:daemon:-w- g::r-x m::rwx o::--- du::rwx du:daemon:-w- du:bin:r-- dg::--- dm::rw- do::r--"},
    {"-m u:bin:r,g::rwx,m::r", "daemon", GENERIC_READ, 3,
        "u::rwx u:daemon:r-x u:bin:r-- g::rw- m::r-x o::--- du::rwx du:daemon:r-x dg::r-- dm::r-x do::---"},
};

void CheckList(const std::string& path, const ListCase& one)
{
    const std::string owner = getpwuid(geteuid())->pw_name;
    const std::string prepare = std::string("setfacl ") + one.prepared + " '" + path + "'";
    ASSERT_TRUE(one.prepared[0] == 0 || std::system(prepare.c_str()) == 0) << prepare;
    const auto modified = std::filesystem::last_write_time(path);
    const std::string account = one.account[0] == 0 ? owner : one.account;
    EXPECT_EQ(SetRights(Text::Widen(path), Text::Widen(account), one.permissions, one.inheritance), "");
    std::string list = one.list;
    if (const std::size_t name = list.find("OWNER"); name != list.npos)
        list.replace(name, 5, owner);
    EXPECT_EQ(ListOf(path), list) << one.prepared << one.account;
    EXPECT_EQ(std::filesystem::last_write_time(path), modified);
}

TEST_F(SecurityOfTheLayer, EntriesAreSetAsAnotherReaderShowsThem)
{
    std::string path = native + "/case";
    for (const ListCase& one : kFiles)
    {
        MakeFile(Text::Widen(path += "f"), "content");
        ASSERT_EQ(chmod(path.c_str(), 0640), 0);
        CheckList(path, one);
    }
    for (const ListCase& one : kFolders)
    {
        std::filesystem::create_directory(path += "d");
        ASSERT_EQ(chmod(path.c_str(), 0750), 0);
        CheckList(path, one);
    }
    // A group has the rights of all its entries, so setting the rights of the owning group removes the group's named
    // entry.
    MakeFile(Text::Widen(path += "g"), "content");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    if (chown(path.c_str(), geteuid(), getgrnam("staff")->gr_gid) == 0) // only root may give the file to any group
        CheckList(path, {"-m g:staff:rwx", "staff", GENERIC_READ, 0, "u::rw- g::r-- m::rwx o::---"});
}

TEST_F(SecurityOfTheLayer, ErrorsStayWithTheirStep)
{
    const std::string before = ListOf(native + "/probe");
    Text file = folder / L"probe";
    const std::tuple<Text, const wchar_t*, DWORD, const char*> cases[] = {
        {folder / L"missing/file", L"daemon", 0, "get: 3"}, {L"Q:\\file", L"daemon", 0, "get: 3"},
        {L"/proc/version", L"daemon", 0, "get: 50"}, // this file system has no access lists
        {file, L"qx-no-such-account", 0, "entries: 1332"}, {file, L"", 0, "entries: 1332"},
        {file, L"daemon", 8, "entries: 50"}}; // can't be expressed
    for (const auto& [path, account, inheritance, error] : cases)
        EXPECT_EQ(SetRights(path, account, GENERIC_READ, inheritance), error);
    ACL foreign{2, 0, sizeof(ACL), 0, 0};
    EXPECT_EQ(SetNamedSecurityInfoW(file.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, &foreign, nullptr),
        DWORD{ERROR_INVALID_ACL});
    EXPECT_EQ(SetNamedSecurityInfoW(file.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, nullptr, nullptr),
        DWORD{ERROR_NOT_SUPPORTED})
        << "on the system, all rights for everyone";
    EXPECT_EQ(ListOf(native + "/probe"), before);
}

#endif

} // namespace
