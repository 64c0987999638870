#include <libloaderapi.h>
#include <stringapiset.h>
#include <winbase.h>
#include <winnls.h>

#include "base/fail.h"
#include "base/forever.h"
#include "base/text.h"
#include "files/path.h"
#include "modules/loaded_modules.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

// The modules loaded by LoadLibraryW, with their counts: only these may be unloaded.
struct Loaded
{
    void* library = nullptr; // the dynamic linker's handle
    int count = 0;
};

struct Loader
{
    Mutex lock; // guards the members below
    std::map<HMODULE, Loaded> loaded;
    std::u16string folder; // as set by SetDllDirectoryW
};

Loader& TheLoader()
{
    static constinit Forever<Loader> loader;
    return loader.Get();
}

std::string FolderOfProgram()
{
    const std::optional<Module> program = ModuleOf(nullptr);
    return program ? FolderOf(program->path) : std::string();
}

// Returns the places to search for a library, in order: the folder set with SetDllDirectoryW, the program's folder, and
// the dynamic linker's search path. Never the current folder, which may contain anyone's files.
std::vector<std::string> PlacesOf(std::u16string_view name)
{
    std::vector<std::string> places;
    const std::vector<std::u16string> names = FileNamesOf(name);
    const auto add = [&](const std::string& folder)
    {
        for (const std::u16string& file : names)
            places.push_back(folder + ToNative(Wide(file)).text);
    };
    if (name.find_first_of(u"/\\:") != name.npos)
    {
        add("");
        return places;
    }
    std::u16string own;
    {
        const std::lock_guard guard(TheLoader().lock);
        own = TheLoader().folder;
    }
    if (!own.empty())
        add(ToFullNative(Wide(own)).text + '/');
    add(FolderOfProgram() + '/');
    add("");
    if (IsDebugHelp(name))
        places.push_back(DebugHelpPath());
    return places;
}

bool IsImage(const std::string& path)
{
    char magic[4] = {};
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) // opening a pipe would block
        return false;
    std::ifstream(path, std::ios::binary).read(magic, sizeof magic);
    return std::memcmp(magic, "\177ELF", sizeof magic) == 0;
}

void* OpenLibrary(std::u16string_view name)
{
    DWORD error = ERROR_MOD_NOT_FOUND;
    for (const std::string& place : PlacesOf(name))
    {
        // A name without a folder is passed on unchanged: the dynamic linker searches its own places.
        if (void* const library = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL))
            return library;
        if (place.find('/') != place.npos && access(place.c_str(), F_OK) == 0 && !IsImage(place))
            error = ERROR_BAD_EXE_FORMAT;
    }
    Fail(error);
    return nullptr;
}

HMODULE HandleOf(void* library)
{
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
        return nullptr;
    const std::optional<Module> module = ModuleAt(map->l_ld);
    return module ? module->handle : nullptr;
}

HMODULE Remember(void* library)
{
    const HMODULE handle = HandleOf(library);
    const std::lock_guard guard(TheLoader().lock);
    Loaded& entry = TheLoader().loaded[handle];
    entry.library = library;
    ++entry.count;
    return handle;
}

// Increments the dynamic linker's reference count of a loaded module and returns the linker's handle.
void* OpenPresent(const Module& module)
{
    const bool isProgram = module.handle == LoadedModules().front().handle;
    return dlopen(isProgram ? nullptr : module.path.c_str(), RTLD_NOW | RTLD_NOLOAD);
}

// Returns the name under which the layer exports a function of the system.
std::string LinkNameOf(const char* name)
{
    return std::string("qxp_") + name;
}

void AddUse(const Module& module)
{
    if (void* const library = OpenPresent(module))
        Remember(library);
}

} // namespace

HMODULE WINAPI GetModuleHandleW(LPCWSTR lpModuleName)
{
    const std::optional<Module> module = lpModuleName == nullptr ? ModuleOf(nullptr) : FindModule(View(lpModuleName));
    if (module)
        return module->handle;
    Fail(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

BOOL WINAPI GetModuleHandleExW(DWORD dwFlags, LPCWSTR lpModuleName, HMODULE* phModule)
{
    const bool isAddress = (dwFlags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0;
    const std::optional<Module> module = lpModuleName == nullptr ? ModuleOf(nullptr)
                                         : isAddress             ? ModuleAt(lpModuleName)
                                                                 : FindModule(View(lpModuleName));
    *phModule = module ? module->handle : nullptr;
    if (!module)
        return Fail(ERROR_MOD_NOT_FOUND);
    constexpr DWORD kUncounted = GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if ((dwFlags & kUncounted) == 0)
        AddUse(*module);
    return TRUE;
}

DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize)
{
    const std::optional<Module> module = ModuleOf(hModule);
    if (!module)
        return 0;
    std::u16string path = FromNative(module->path);
    if (path.size() < nSize)
    {
        SetLastError(ERROR_SUCCESS);
        return CopyOut(path, lpFilename, nSize);
    }
    // Stores the part that fits, terminated within the buffer.
    Fail(ERROR_INSUFFICIENT_BUFFER);
    if (nSize > 0)
        CopyOut(path.substr(0, nSize - 1), lpFilename, nSize);
    return nSize;
}

DWORD WINAPI GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize)
{
    const std::optional<Module> module = ModuleOf(hModule);
    if (!module)
        return 0;
    const std::u16string path = FromNative(module->path);
    const int needed = WideCharToMultiByte(CP_ACP, 0, Wide(path), -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(std::max(needed, 1)), '\0');
    WideCharToMultiByte(CP_ACP, 0, Wide(path), -1, text.data(), needed, nullptr, nullptr);
    if (text.size() <= nSize)
    {
        SetLastError(ERROR_SUCCESS);
        std::copy(text.begin(), text.end(), lpFilename);
        return static_cast<DWORD>(text.size() - 1);
    }
    // Stores the part that fits, terminated within the buffer.
    Fail(ERROR_INSUFFICIENT_BUFFER);
    if (nSize > 0)
        *std::copy_n(text.begin(), nSize - 1, lpFilename) = '\0';
    return nSize;
}

HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName)
{
    if (lpLibFileName == nullptr || *lpLibFileName == 0)
    {
        Fail(lpLibFileName == nullptr ? ERROR_INVALID_PARAMETER : ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    if (const std::optional<Module> present = FindModule(View(lpLibFileName)))
    {
        AddUse(*present);
        return present->handle;
    }
    void* const library = OpenLibrary(View(lpLibFileName));
    return library == nullptr ? nullptr : Remember(library);
}

BOOL WINAPI FreeLibrary(HMODULE hLibModule)
{
    if (hLibModule == nullptr)
        return Fail(ERROR_INVALID_HANDLE);
    if (!ModuleOf(hLibModule))
        return FALSE;
    void* library = nullptr;
    {
        const std::lock_guard guard(TheLoader().lock);
        const auto entry = TheLoader().loaded.find(hLibModule);
        if (entry == TheLoader().loaded.end())
            return TRUE; // linked with the program, so it stays loaded
        library = entry->second.library;
        if (--entry->second.count == 0)
            TheLoader().loaded.erase(entry);
    }
    dlclose(library); // without the lock, because the library's own cleanup may call back
    return TRUE;
}

FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName)
{
    const std::optional<Module> module = ModuleOf(hModule);
    if (!module)
        return nullptr;
    const bool isOrdinal = reinterpret_cast<ULONG_PTR>(lpProcName) <= 0xFFFF; // Linux exports by name only
    void* const library = isOrdinal ? nullptr : OpenPresent(*module);
    const bool hasLinkNames = IsLayerOrDebugHelp(*module);
    void* const address =
        library == nullptr ? nullptr : dlsym(library, hasLinkNames ? LinkNameOf(lpProcName).c_str() : lpProcName);
    if (library != nullptr)
        dlclose(library);
    // The dynamic linker also finds functions exported by the library's dependencies.
    const std::optional<Module> owner = address == nullptr ? std::nullopt : ModuleAt(address);
    if (owner && owner->handle == module->handle)
        return reinterpret_cast<FARPROC>(address);
    Fail(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

BOOL WINAPI SetDllDirectoryW(LPCWSTR lpPathName)
{
    const std::lock_guard guard(TheLoader().lock);
    TheLoader().folder = lpPathName == nullptr ? std::u16string() : std::u16string(View(lpPathName));
    return TRUE;
}

DWORD WINAPI GetDllDirectoryW(DWORD nBufferLength, LPWSTR lpBuffer)
{
    const std::lock_guard guard(TheLoader().lock);
    SetLastError(ERROR_SUCCESS);
    return CopyOut(TheLoader().folder, lpBuffer, nBufferLength);
}
