#include "dbghelp/sessions.h"

#include "modules/image_list.h"

#include <errhandlingapi.h>
#include <winerror.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <string_view>

#include <pthread.h>

namespace qxplatform
{
namespace
{

struct Sessions
{
    std::mutex lock; // guards the map, not the sessions
    std::map<HANDLE, std::unique_ptr<SymbolSession>> byProcess;
};

Sessions& TheSessions();

// Never destroyed, because an abandoned thread may still use its session. The lock is held during a fork, so that it is
// free in the child; it's always held for a short time only.
Sessions& MakeSessions()
{
    pthread_atfork(
        [] { TheSessions().lock.lock(); }, [] { TheSessions().lock.unlock(); }, [] { TheSessions().lock.unlock(); });
    return *new Sessions;
}

Sessions& TheSessions()
{
    static Sessions& sessions = MakeSessions();
    return sessions;
}

// Returns the canonical path of a folder, so that equal folders compare equal, or an empty text if it doesn't exist.
std::string RealFolder(std::string_view folder)
{
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(folder, error);
    return error || !std::filesystem::is_directory(real, error) ? std::string() : real.string();
}

// Splits the search path. Drops duplicates and missing folders, because each folder is searched for each module.
std::vector<std::string> FoldersOf(const char* searchPath)
{
    std::vector<std::string> folders;
    std::string_view rest = searchPath == nullptr ? "" : searchPath;
    while (!rest.empty())
    {
        const std::string_view part = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        std::string folder = RealFolder(part);
        if (!folder.empty() && std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(std::move(folder));
    }
    return folders;
}

std::string_view FileOf(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

// Returns a module's name: its file name up to ".so".
std::string NameOfFile(std::string_view path)
{
    const std::string_view file = FileOf(path);
    return std::string(file.substr(0, file.find(".so")));
}

SymbolModule::Origin OriginOf(const char* path, const char* name, std::uint64_t base, std::uint64_t size)
{
    SymbolModule::Origin origin{base, size, path == nullptr ? "" : path, "", false};
    for (LoadedImage& image : ListLoadedImages())
    {
        if (image.begin != base || (path != nullptr && FileOf(path) != FileOf(image.path)))
            continue;
        // The loader's path is right even if the caller's code page can't express it.
        origin.isInMemory = !image.IsFile();
        origin.path = std::move(image.path);
        origin.size = image.size;
    }
    origin.name = NameOfFile(name == nullptr || *name == 0 ? std::string_view(origin.path) : name);
    return origin;
}

} // namespace

SymbolModule* SymbolSession::FindModule(std::uint64_t address)
{
    const auto place = std::upper_bound(_modules.begin(), _modules.end(), address,
        [](std::uint64_t value, const auto& module) { return value < module->Base(); });
    if (place != _modules.begin() && (*(place - 1))->Contains(address))
        return (place - 1)->get();
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

SymbolModule* SymbolSession::Load(const char* path, const char* name, std::uint64_t base, std::uint64_t size)
{
    auto module = std::make_unique<SymbolModule>(OriginOf(path, name, base, size), _debugFolders);
    if (!module->IsImage())
    {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    const auto next = std::upper_bound(_modules.begin(), _modules.end(), module->Base(),
        [](std::uint64_t value, const auto& other) { return value < other->Base(); });
    if (next != _modules.begin() && (*(next - 1))->Contains(module->Base()))
    {
        SetLastError((*(next - 1))->Base() == module->Base() ? ERROR_SUCCESS : ERROR_INVALID_ADDRESS);
        return nullptr;
    }
    if (next != _modules.end() && module->Contains((*next)->Base()))
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return nullptr;
    }
    return _modules.insert(next, std::move(module))->get();
}

bool OpenSession(HANDLE process, const char* searchPath)
{
    elf_version(EV_CURRENT);
    auto session = std::make_unique<SymbolSession>(FoldersOf(searchPath));
    Sessions& sessions = TheSessions();
    const std::lock_guard guard(sessions.lock);
    const bool isNew = sessions.byProcess.try_emplace(process, std::move(session)).second;
    if (!isNew)
        SetLastError(ERROR_INVALID_PARAMETER);
    return isNew;
}

bool CloseSession(HANDLE process)
{
    Sessions& sessions = TheSessions();
    std::unique_ptr<SymbolSession> closing;
    {
        const std::lock_guard guard(sessions.lock);
        if (auto node = sessions.byProcess.extract(process))
            closing = std::move(node.mapped());
    }
    if (!closing)
        SetLastError(ERROR_INVALID_HANDLE);
    return closing != nullptr;
}

SymbolSession* FindSession(HANDLE process)
{
    Sessions& sessions = TheSessions();
    const std::lock_guard guard(sessions.lock);
    const auto found = sessions.byProcess.find(process);
    if (found != sessions.byProcess.end())
        return found->second.get();
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

} // namespace qxplatform
