#include "clipboard/clipboard_files.h"

#include "base/fail.h"
#include "base/home.h"
#include "base/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace qxplatform
{

namespace
{

constexpr UINT kFirstRegistered = 0xC000;
constexpr UINT kLastRegistered = 0xFFFF;
constexpr std::size_t kLongestName = 255;
constexpr mode_t kForUserAlone = S_IRUSR | S_IWUSR; // copied data is private to the user
constexpr char kLockName[] = "/lock";
constexpr char kNamesName[] = "/formats";
constexpr char kFreshSuffix[] = ".new";

// Creates the missing folders of a path.
bool MakeFolders(const std::string& path)
{
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), S_IRWXU);
    return mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

// Returns an empty text if there is no home folder.
std::string ClipboardFolder()
{
    const std::string home = HomeFolder();
    return home.empty() ? home : home + "/clipboard";
}

std::string DataPath(UINT format)
{
    char name[16];
    std::snprintf(name, sizeof name, "/%04x", format);
    return ClipboardFolder() + name;
}

Descriptor OpenInFolder(const char* name, int flags)
{
    const std::string folder = ClipboardFolder();
    if (folder.empty() || !MakeFolders(folder))
        return Descriptor();
    return Descriptor(open((folder + name).c_str(), flags | O_CLOEXEC, kForUserAlone));
}

// Returns true if the name can be stored as a line: it must not contain line breaks or other control characters.
bool IsName(std::u16string_view name)
{
    return !name.empty() && name.size() <= kLongestName &&
           std::all_of(name.begin(), name.end(), [](char16_t character) { return character >= u' '; });
}

// Returns the number of a registered name, which is derived from the position of its line, or 0 with the next free
// number in `next`. A last line without a line break is ignored: its writer ended while writing it.
UINT NumberOfName(std::string_view lines, std::u16string_view name, UINT& next)
{
    next = kFirstRegistered;
    for (std::size_t begin = 0, end; (end = lines.find('\n', begin)) != std::string_view::npos; begin = end + 1, ++next)
    {
        if (EqualWithoutCase(ToWide(lines.substr(begin, end - begin)), name))
            return next;
    }
    return 0;
}

} // namespace

Descriptor LockClipboard()
{
    Descriptor file = OpenInFolder(kLockName, O_RDWR | O_CREAT);
    if (!file)
    {
        FailErrno();
        return Descriptor();
    }
    if (!Lock(file.Get(), LOCK_EX | LOCK_NB))
    {
        Fail(ERROR_ACCESS_DENIED);
        return Descriptor();
    }
    return file;
}

BOOL StoreClipboardData(UINT format, std::string_view bytes)
{
    const std::string path = DataPath(format);
    const std::string fresh = path + kFreshSuffix;
    const Descriptor file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kForUserAlone));
    if (file && WriteAll(file.Get(), bytes) && rename(fresh.c_str(), path.c_str()) == 0)
        return TRUE;
    FailErrno();
    unlink(fresh.c_str());
    return FALSE;
}

BOOL RemoveClipboardData()
{
    const std::string folder = ClipboardFolder();
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
    if (entries == nullptr)
        return FailErrno();
    bool isEmpty = true;
    while (const dirent* entry = readdir(entries.get()))
    {
        const std::string name = std::string("/") + entry->d_name;
        if (name != kLockName && name != kNamesName && entry->d_name[0] != '.')
            isEmpty &= unlink((folder + name).c_str()) == 0;
    }
    return isEmpty ? TRUE : FailErrno();
}

BOOL ReadClipboardData(UINT format, std::string& bytes)
{
    const Descriptor file(open(DataPath(format).c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return errno == ENOENT || errno == ENOTDIR ? Fail(ERROR_NOT_FOUND) : FailErrno();
    return ReadAll(file.Get(), bytes) ? TRUE : FailErrno();
}

bool HasClipboardData(UINT format)
{
    return access(DataPath(format).c_str(), F_OK) == 0;
}

UINT ClipboardFormatNumber(std::u16string_view name)
{
    if (!IsName(name))
        return static_cast<UINT>(Fail(name.size() > kLongestName ? ERROR_INVALID_PARAMETER : ERROR_INVALID_NAME));
    const Descriptor file = OpenInFolder(kNamesName, O_RDWR | O_CREAT | O_APPEND);
    std::string lines;
    if (!file || !Lock(file.Get(), LOCK_EX) || !ReadAll(file.Get(), lines))
        return static_cast<UINT>(FailErrno());
    UINT next = 0;
    if (const UINT known = NumberOfName(lines, name, next); known != 0)
        return known;
    if (next > kLastRegistered)
        return static_cast<UINT>(Fail(ERROR_NOT_ENOUGH_MEMORY));
    lines.resize(lines.rfind('\n') + 1);
    if (ftruncate(file.Get(), static_cast<off_t>(lines.size())) != 0 || !WriteAll(file.Get(), ToBytes(name) + "\n"))
        return static_cast<UINT>(FailErrno());
    return next;
}

} // namespace qxplatform
