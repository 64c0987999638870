// Access lists of files as the layer stores them, read back by getfacl and prepared by setfacl.
#include "system_support.h"

#include <aclapi.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxtest;

namespace
{

constexpr SECURITY_INFORMATION kAccessList = DACL_SECURITY_INFORMATION;

std::string OutputOf(const std::string& command)
{
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 1000> line{};
    while (fgets(line.data(), line.size(), pipe) != nullptr)
        output += line.data();
    pclose(pipe);
    return output;
}

// Returns the lines of a list, separated by spaces.
std::string ListOf(const std::string& path)
{
    return OutputOf("getfacl -cEp '" + path + "' | paste -sd' ' | tr -d '\\n' | sed 's/ *$//'");
}

// Returns the error of the first step that fails, as "step: error", or an empty text.
std::string SetRights(const Text& path, const Text& account, DWORD permissions, DWORD inheritance)
{
    Text name = path;
    Text accountName = account;
    PACL list = nullptr;
    PACL changed = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    DWORD error =
        GetNamedSecurityInfoW(name, SE_FILE_OBJECT, kAccessList, nullptr, nullptr, &list, nullptr, &descriptor);
    if (error != ERROR_SUCCESS)
        return "get: " + std::to_string(error);
    EXPLICIT_ACCESS_W access;
    BuildExplicitAccessWithNameW(&access, accountName.data(), permissions, SET_ACCESS, inheritance);
    error = SetEntriesInAclW(1, &access, list, &changed);
    std::string result = "entries: ";
    if (error == ERROR_SUCCESS)
    {
        error = SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, changed, nullptr);
        result = "set: ";
    }
    LocalFree(changed);
    LocalFree(descriptor);
    return error == ERROR_SUCCESS ? std::string() : result + std::to_string(error);
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
    bool isFolder;
    const char* prepared; // arguments of setfacl
    const char* account;  // empty for the owner
    DWORD permissions;
    DWORD inheritance;
    const char* list;
};

// daemon is user 1 and bin user 2, games is a user and a group, staff is only a group.
constexpr ListCase kListCases[] = {
    {false, "", "daemon", GENERIC_READ, 0, "user::rw- user:daemon:r-- group::r-- mask::r-- other::---"},
    {false, "", "daemon", FILE_GENERIC_WRITE, 0, "user::rw- user:daemon:-w- group::r-- mask::rw- other::---"},
    {false, "", "daemon", GENERIC_ALL, 3, "user::rw- user:daemon:rwx group::r-- mask::rwx other::---"},
    {false, "", "daemon", FILE_EXECUTE | FILE_APPEND_DATA, 0,
        "user::rw- user:daemon:-wx group::r-- mask::rwx other::---"},
    {false, "", "daemon", 0, 0, "user::rw- user:daemon:--- group::r-- mask::r-- other::---"},
    {false, "", "games", GENERIC_READ, 0, "user::rw- user:games:r-- group::r-- mask::r-- other::---"},
    {false, "", "staff", GENERIC_READ, 0, "user::rw- group::r-- group:staff:r-- mask::r-- other::---"},
    {false, "", "", GENERIC_READ, 0, "user::r-- group::r-- other::---"},
    // The account's former entry is replaced; a mask never shrinks.
    {false, "-m u:daemon:rwx", "daemon", GENERIC_READ, 0, "user::rw- user:daemon:r-- group::r-- mask::rwx other::---"},
    // Growing the mask gives nothing to those whom it withheld something.
    {false, "-m u:bin:rwx,g::rw,m::r", "daemon", GENERIC_WRITE, 0,
        "user::rw- user:daemon:-w- user:bin:r-x group::r-- mask::rw- other::---"},
    {true, "", "daemon", GENERIC_READ, 0, "user::rwx user:daemon:r-x group::r-x mask::r-x other::---"},
    {true, "", "daemon", GENERIC_READ, 1,
        "user::rwx user:daemon:r-x group::r-x mask::r-x other::--- default:user::rwx default:user:daemon:r-x "
        "default:group::r-x default:mask::r-x default:other::---"},
    {true, "", "", FILE_GENERIC_READ, 3,
        "user::r-x group::r-x other::--- default:user::r-x default:user:OWNER:r-x default:group::r-x "
        "default:mask::r-x default:other::---"},
    {true, "-d -m u:bin:r,g::-,o::r", "daemon", GENERIC_WRITE, 2,
        "user::rwx user:daemon:-w- group::r-x mask::rwx other::--- default:user::rwx default:user:daemon:-w- "
        "default:user:bin:r-- default:group::--- default:mask::rw- default:other::r--"},
    {true, "-m u:bin:r,g::rwx,m::r", "daemon", GENERIC_READ, 3,
        "user::rwx user:daemon:r-x user:bin:r-- group::rw- mask::r-x other::--- default:user::rwx "
        "default:user:daemon:r-x default:group::r-- default:mask::r-x default:other::---"},
};

TEST_F(SecurityOfTheLayer, EntriesAreSetAsAnotherReaderShowsThem)
{
    const passwd* const owner = getpwuid(geteuid());
    ASSERT_NE(owner, nullptr);
    for (std::size_t i = 0; i < std::size(kListCases); ++i)
    {
        const ListCase& one = kListCases[i];
        SCOPED_TRACE(i);
        const std::string path = native + "/case" + std::to_string(i);
        if (one.isFolder)
            std::filesystem::create_directory(path);
        else
            MakeFile(Text::Widen(path), "content");
        ASSERT_EQ(chmod(path.c_str(), one.isFolder ? 0750 : 0640), 0);
        if (one.prepared[0] != 0)
        {
            ASSERT_EQ(std::system(("setfacl " + std::string(one.prepared) + " '" + path + "'").c_str()), 0);
        }
        const auto modified = std::filesystem::last_write_time(path);
        const char* const account = one.account[0] == 0 ? owner->pw_name : one.account;
        EXPECT_EQ(SetRights(Text::Widen(path), Text::Widen(account), one.permissions, one.inheritance), "");
        std::string list = one.list;
        if (const std::size_t name = list.find("OWNER"); name != list.npos)
            list.replace(name, 5, owner->pw_name);
        EXPECT_EQ(ListOf(path), list);
        EXPECT_EQ(std::filesystem::last_write_time(path), modified);
    }
}

TEST_F(SecurityOfTheLayer, ErrorsStayWithTheirStep)
{
    const Text file = folder / L"probe";
    const std::string before = ListOf(native + "/probe");
    EXPECT_EQ(SetRights(folder / L"missing", L"daemon", GENERIC_READ, 0), "get: 2");
    EXPECT_EQ(SetRights(folder / L"missing/file", L"daemon", GENERIC_READ, 0), "get: 3");
    EXPECT_EQ(SetRights(L"Q:\\file", L"daemon", GENERIC_READ, 0), "get: 3");
    EXPECT_EQ(SetRights(L"/proc/version", L"daemon", GENERIC_READ, 0), "get: 50") << "no access lists there";
    EXPECT_EQ(SetRights(file, L"qx-no-such-account", GENERIC_READ, 0), "entries: 1332");
    EXPECT_EQ(SetRights(file, L"", GENERIC_READ, 0), "entries: 1332");
    EXPECT_EQ(SetRights(file, L"daemon", GENERIC_READ, 8), "entries: 50") << "can't be expressed";
    Text path = file;
    ACL foreign{2, 0, sizeof(ACL), 0, 0};
    EXPECT_EQ(SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, &foreign, nullptr),
        DWORD{ERROR_INVALID_ACL});
    EXPECT_EQ(SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kAccessList, nullptr, nullptr, nullptr, nullptr),
        DWORD{ERROR_NOT_SUPPORTED})
        << "on the system, all rights for everyone";
    EXPECT_EQ(ListOf(native + "/probe"), before);
}

} // namespace
