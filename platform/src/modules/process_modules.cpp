#include <psapi.h>

#include "base/fail.h"
#include "base/pseudo_handles.h"
#include "base/text.h"
#include "files/path.h"
#include "modules/loaded_modules.h"

#include <algorithm>
#include <new>

using namespace qxplatform;

namespace
{

bool IsOwn(HANDLE process)
{
    return IsCurrentProcess(process) || Fail(ERROR_ACCESS_DENIED);
}

// Copies as much of a text as fits, terminated, and returns its length.
DWORD CopyTruncated(std::u16string_view text, LPWSTR buffer, DWORD size)
{
    if (size == 0)
    {
        Fail(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return CopyOut(text.substr(0, size - 1), buffer, size);
}

} // namespace

BOOL WINAPI EnumProcessModules(HANDLE hProcess, HMODULE* lphModule, DWORD cb, DWORD* lpcbNeeded)
try
{
    if (!IsOwn(hProcess))
        return FALSE;
    const std::vector<Module> modules = LoadedModules();
    const std::size_t fitting = std::min(modules.size(), cb / sizeof(HMODULE));
    for (std::size_t index = 0; index < fitting; ++index)
        lphModule[index] = modules[index].handle;
    *lpcbNeeded = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
    return TRUE;
}
catch (const std::bad_alloc&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI GetModuleInformation(HANDLE hProcess, HMODULE hModule, LPMODULEINFO lpmodinfo, DWORD cb)
try
{
    if (!IsOwn(hProcess))
        return FALSE;
    if (cb < sizeof *lpmodinfo)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    const std::optional<Module> module = ModuleOf(hModule);
    if (!module)
        return Fail(ERROR_INVALID_HANDLE);
    lpmodinfo->lpBaseOfDll = module->handle;
    lpmodinfo->SizeOfImage = static_cast<DWORD>(module->size);
    lpmodinfo->EntryPoint = nullptr;
    return TRUE;
}
catch (const std::bad_alloc&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

DWORD WINAPI GetModuleFileNameExW(HANDLE hProcess, HMODULE hModule, LPWSTR lpFilename, DWORD nSize)
try
{
    if (!IsOwn(hProcess))
        return 0;
    const std::optional<Module> module = ModuleOf(hModule);
    if (module)
        return CopyTruncated(FromNative(module->path), lpFilename, nSize);
    Fail(ERROR_INVALID_HANDLE);
    return 0;
}
catch (const std::bad_alloc&)
{
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

DWORD WINAPI GetModuleBaseNameW(HANDLE hProcess, HMODULE hModule, LPWSTR lpBaseName, DWORD nSize)
try
{
    if (!IsOwn(hProcess))
        return 0;
    const std::optional<Module> module = ModuleOf(hModule);
    if (module)
    {
        const std::u16string path = FromNative(module->path);
        return CopyTruncated(std::u16string_view(path).substr(path.rfind(u'/') + 1), lpBaseName, nSize);
    }
    Fail(ERROR_INVALID_HANDLE);
    return 0;
}
catch (const std::bad_alloc&)
{
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}
