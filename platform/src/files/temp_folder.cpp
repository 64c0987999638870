#include "files/temp_folder.h"

#include "base/environment.h"
#include "files/path.h"

#include <sys/stat.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

bool IsSharedTempFolder(const struct stat& folder)
{
    struct stat temp
    {
    };
    return (folder.st_mode & S_IWOTH) != 0 && stat(TempFolder().c_str(), &temp) == 0 && folder.st_dev == temp.st_dev &&
           folder.st_ino == temp.st_ino;
}

bool IsInSharedTempFolder(const std::string& path)
{
    struct stat folder
    {
    };
    return stat(FolderOf(path).c_str(), &folder) == 0 && IsSharedTempFolder(folder);
}

} // namespace

std::string TempFolder()
{
    for (const char* const name : {"TMPDIR", "TMP", "TEMP"})
        if (std::string folder = EnvironmentValue(name); !folder.empty())
            return folder;
    return "/tmp";
}

mode_t ModeOfNew(const std::string& path, mode_t usual)
{
    return IsInSharedTempFolder(path) ? usual & S_IRWXU : usual;
}

bool IsSharedTempFolder(int folder)
{
    struct stat info
    {
    };
    return fstat(folder, &info) == 0 && IsSharedTempFolder(info);
}

bool IsTakenByAnother(const std::string& path)
{
    struct stat info
    {
    };
    return IsInSharedTempFolder(path) && lstat(path.c_str(), &info) == 0 && info.st_uid != geteuid();
}

} // namespace qxplatform
