#include "module/late_load.h"

#include "core/charset/charset_conversion.h"
#include "core/debug_line.h"
#include "core/forever.h"
#include "core/system_values.h"
#include "module/late_libraries.h"
#include "module/module_paths.h"
#include "module/system_facts.h"

#include <wchar.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <iterator>

namespace qx
{
namespace
{

// Off unless a debugger or a test turns it on, because on most systems some of the libraries are missing as expected.
std::atomic<bool> lateLoadLog = false;

// The error of a load that failed although the system reported no error.
constexpr DWORD kUnknownLoadError = 0x20000000;

// Sets the DLL folder of the process and restores it at the end of the scope. If the process had none, the empty folder
// is restored, which removes the current folder from the search. The system doesn't distinguish the two cases, and the
// empty folder is safer. Only one object exists at a time, because two that restore in the wrong order would leave the
// library's folder set.
class DllFolder
{
public:
    explicit DllFolder(const wchar_t* folder) : _alone(Section())
    {
        auto& kernel = Kernel32();
        if (!kernel.p_GetDllDirectory.IsThere() || !kernel.p_SetDllDirectory.IsThere())
            return;
        const DWORD length = kernel.p_GetDllDirectory(static_cast<DWORD>(std::size(_before)), _before);
        _changed = length < std::size(_before) && kernel.p_SetDllDirectory(folder) != FALSE;
    }
    DllFolder(const DllFolder&) = delete;
    DllFolder& operator=(const DllFolder&) = delete;
    ~DllFolder()
    {
        if (!_changed)
            return;
        const DWORD error = GetLastError(); // the error of the load, which the caller queries afterwards
        Kernel32().p_SetDllDirectory(_before);
        SetLastError(error);
    }

private:
    static clsCriticalSection& Section()
    {
        static clsCriticalSection& section = MakeForever<clsCriticalSection>();
        return section;
    }

    const clsCriticalSectionLock _alone;
    wchar_t _before[MAX_PATH + 1] = {};
    bool _changed = false;
};

} // namespace

void SetLateLoadLog(bool on)
{
    lateLoadLog = on;
}

bool IsExpectedToBeMissing(const wchar_t* moduleName, unsigned short systemVersion, unsigned short systemGeneration)
{
    return (_wcsicmp(moduleName, L"dwmapi") == 0 && systemVersion < 0x0600) ||
           (_wcsicmp(moduleName, L"shcore") == 0 && systemGeneration < 0x0603);
}

bool LateProcedure::Resolve()
{
    std::atomic<LateState> state = LateState::Unasked;
    const FARPROC address = _library.Resolve(_name, state, _argumentBytes);
    // Store the address first: a thread that sees the state Valid may call it.
    _address.store(address, std::memory_order_release);
    _state.store(state, std::memory_order_release);
    return address != nullptr;
}

CLateLoadBase::CLateLoadBase(const wchar_t* moduleName, std::size_t skippedCharacters)
    : _skippedCharacters(skippedCharacters)
{
    SetModuleName(moduleName);
}

CLateLoadBase::~CLateLoadBase()
{
    if (_module && _freeOnDestruction)
        FreeLibrary(_module);
}

bool CLateLoadBase::Load()
{
    clsCriticalSectionLock lock(_lock);
    if (_module)
        return true;
    HMODULE module = LoadLibraryW(_moduleName);
    DWORD error = module ? 0 : GetLastError();
    if (!module && IsOwnModule())
    {
        module = LoadFromOwnFolder(_moduleName);
        error = module ? 0 : GetLastError();
    }
    if (FinishLoad(module, error))
        return true;
    if (!IsExpectedToBeMissing(_moduleName, SystemVersion(), GetSystemGeneration()))
        Log(L"WRN: module '%s' could not be loaded: %s", _moduleName, String::SystemErrorText(error).Text());
    return false;
}

void CLateLoadBase::SetModuleName(const wchar_t* name)
{
    const std::size_t length = wcsnlen(name, std::size(_moduleName) - 1);
    std::copy_n(name, length, _moduleName);
    _moduleName[length] = 0;
}

bool CLateLoadBase::FinishLoad(HMODULE module, DWORD error)
{
    _module = module;
    _lastLoadError = module ? 0 : (error ? error : kUnknownLoadError);
    return module != nullptr;
}

HMODULE CLateLoadBase::LoadFromOwnFolder(const wchar_t* fileName)
{
    // Don't use LibraryPaths().directory, because its upper-case form is a different folder on case-sensitive systems.
    const String path = ModulePath(LibraryHandle());
    const DllFolder folder(path.Left(path.Length() - FileNameOf(path.View()).size()));
    return LoadLibraryW(fileName);
}

// Modules of this product family are recognised by the first two letters of their names.
bool CLateLoadBase::IsOwnModule() const
{
    return _wcsnicmp(_moduleName, L"TR", 2) == 0;
}

void CLateLoadBase::Log(const wchar_t* format, ...)
{
    if (!lateLoadLog || !UtilIsDebugActive())
        return;
    va_list arguments;
    va_start(arguments, format);
    String line;
    line.FormatV(format, arguments);
    va_end(arguments);
    DebugLine(L"%s", line.Text());
}

bool CLateLoadBase::EnsureLoaded(const wchar_t* name, bool load)
{
    clsCriticalSectionLock lock(_lock);
    if (_moduleName[0] == 0)
        SetModuleName(name);
    return _module != nullptr || (load && Load());
}

FARPROC CLateLoadBase::Resolve(const wchar_t* functionName, std::atomic<LateState>& state, int argumentBytes)
{
    clsCriticalSectionLock lock(_lock);
    if (wcsncmp(functionName, L"p_", 2) == 0)
        functionName += 2;
    functionName += wcsnlen(functionName, _skippedCharacters);
    if (!_module && (_lastLoadError != 0 || !Load()))
        return nullptr;
    const FARPROC address = FindByAnyName(functionName, argumentBytes);
    state = address ? LateState::Valid : LateState::Missing;
    return address;
}

FARPROC CLateLoadBase::FindByAnyName(const wchar_t* name, int argumentBytes) const
{
    std::array<String, 4> names;
    names[0] = name;
    names[1] = String(name) + L"W";
    names[2].Format(L"_%s@%d", name, argumentBytes);
    names[3].Format(L"_%s%c@%d", name, L'W', argumentBytes);
    // In shell32, some plain names are 8-bit versions, so try the name with "W" first.
    if (_wcsicmp(_moduleName, L"shell32") == 0)
        std::swap(names[0], names[1]);
    for (const String& candidate : names)
    {
        clsCharsetConversionString narrow(candidate.Text());
        if (const FARPROC address = _getProcAddress(_module, narrow.GetNarrow()))
            return address;
    }
    return nullptr;
}

} // namespace qx
