#include <processthreadsapi.h>
#include <winbase.h>

#include "base/environment.h"
#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/path.h"
#include "process/command_line.h"
#include "process/process_object.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <vector>

#include <spawn.h>
#include <sys/stat.h>

using namespace qxplatform;

namespace
{

using Strings = std::vector<std::string>;

std::vector<char*> Pointers(Strings& strings)
{
    std::vector<char*> pointers;
    for (std::string& text : strings)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// The file actions and attributes for posix_spawn.
class SpawnActions
{
public:
    SpawnActions()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        // The new program starts with no signals blocked, whatever the calling thread's mask.
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    ~SpawnActions()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

bool IsProgram(const std::string& path)
{
    struct stat info
    {
    };
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Returns the path of a program. Looks for a name without a folder in the calling program's folder, then along PATH.
std::string FindProgram(const std::u16string& name)
{
    const bool isBare = name.find_first_of(u"/\\:") == name.npos;
    if (!isBare)
        return ToFullNative(Wide(name)).text;
    const std::string bytes = ToBytes(name);
    std::error_code ignored;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ignored);
    std::string folders = self.parent_path().string() + ':' + EnvironmentValue("PATH");
    while (!folders.empty())
    {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        std::string candidate = folders.substr(0, end) + '/' + bytes;
        if (end > 0 && IsProgram(candidate))
            return candidate;
        folders.erase(0, end + 1);
    }
    return {};
}

Strings EnvironmentOf(LPVOID block, bool isWide)
{
    if (block == nullptr)
        return EnvironmentEntries();
    Strings entries;
    if (isWide)
        for (LPCWSTR entry = static_cast<LPCWSTR>(block); *entry != 0; entry += View(entry).size() + 1)
            entries.push_back(ToBytes(View(entry)));
    else
        for (const char* entry = static_cast<const char*>(block); *entry != 0; entry += entries.back().size() + 1)
            entries.emplace_back(entry);
    return entries;
}

// Sets the standard streams of the new process as specified by the caller.
BOOL AddStreams(const STARTUPINFOW& info, posix_spawn_file_actions_t& actions)
{
    if ((info.dwFlags & STARTF_USESTDHANDLES) == 0)
        return TRUE;
    const HANDLE handles[] = {info.hStdInput, info.hStdOutput, info.hStdError};
    for (int stream = 0; stream < 3; ++stream)
    {
        if (handles[stream] == nullptr || handles[stream] == INVALID_HANDLE_VALUE)
            continue;
        const Ref<FileObject> file = LookUp<FileObject>(handles[stream]);
        if (!file)
            return FALSE;
        posix_spawn_file_actions_adddup2(&actions, file->descriptor(), stream);
    }
    return TRUE;
}

BOOL AddFolder(LPCWSTR folder, posix_spawn_file_actions_t& actions)
{
    if (folder == nullptr)
        return TRUE;
    const NativePath path = ToNative(folder);
    struct stat info
    {
    };
    if (path.IsEmpty() || stat(path.text.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return Fail(ERROR_DIRECTORY);
    posix_spawn_file_actions_addchdir_np(&actions, path.text.c_str());
    return TRUE;
}

BOOL GiveHandles(pid_t id, PROCESS_INFORMATION& information)
{
    const auto process = MakeObject<ProcessObject>(id);
    ProcessObject::Watch(process);
    // The process object also represents the child's initial thread.
    information = {AddHandle(process), AddHandle(process), static_cast<DWORD>(id), static_cast<DWORD>(id)};
    return information.hProcess != nullptr && information.hThread != nullptr;
}

} // namespace

BOOL WINAPI CreateProcessW(LPCWSTR lpApplicationName, LPWSTR lpCommandLine, LPSECURITY_ATTRIBUTES,
    LPSECURITY_ATTRIBUTES, BOOL, DWORD dwCreationFlags, LPVOID lpEnvironment, LPCWSTR lpCurrentDirectory,
    LPSTARTUPINFOW lpStartupInfo, LPPROCESS_INFORMATION lpProcessInformation)
{
    if (lpApplicationName == nullptr && lpCommandLine == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if (dwCreationFlags & CREATE_SUSPENDED)
        return Fail(ERROR_NOT_SUPPORTED);
    const std::vector<std::u16string> words = lpCommandLine != nullptr
                                                  ? SplitCommandLine(View(lpCommandLine))
                                                  : std::vector{std::u16string(View(lpApplicationName))};
    const std::string program =
        FindProgram(lpApplicationName == nullptr ? words[0] : std::u16string(View(lpApplicationName)));
    if (program.empty())
        return Fail(ERROR_FILE_NOT_FOUND);

    Strings arguments;
    for (const std::u16string& word : words)
        arguments.push_back(ToBytes(word));
    Strings environment = EnvironmentOf(lpEnvironment, (dwCreationFlags & CREATE_UNICODE_ENVIRONMENT) != 0);
    SpawnActions spawn;
    if (!AddFolder(lpCurrentDirectory, spawn.actions) || !AddStreams(*lpStartupInfo, spawn.actions))
        return FALSE;
    pid_t id = 0;
    const int code = posix_spawn(&id, program.c_str(), &spawn.actions, &spawn.attributes, Pointers(arguments).data(),
        Pointers(environment).data());
    if (code != 0)
        return Fail(PathError(code, program));
    return GiveHandles(id, *lpProcessInformation);
}
