#include "core/late_load.h"

#include "core/charset_conversion.h"
#include "core/debug_line.h"
#include "core/late_libraries.h"
#include "core/module.h"
#include "core/module_paths.h"

#include <wchar.h>

#include <array>
#include <cstdarg>
#include <iterator>

namespace qx
{
namespace
{

std::atomic<bool> lateLoadLog{false};

// Stands for a load that failed although the system gave no error.
constexpr DWORD unknownLoadError = 0x20000000;

constexpr std::size_t moduleNameLength = 260;

// Restores the DLL folder of the process at the end of its scope.
class DllFolder
{
public:
    explicit DllFolder(const wchar_t* folder)
    {
        auto& kernel = Kernel32();
        if (!kernel.GetDllDirectory.IsThere() || !kernel.SetDllDirectory.IsThere())
            return;
        const DWORD length = kernel.GetDllDirectory(static_cast<DWORD>(std::size(_before)), _before);
        _changed = length < std::size(_before) && kernel.SetDllDirectory(folder) != FALSE;
    }
    DllFolder(const DllFolder&) = delete;
    DllFolder& operator=(const DllFolder&) = delete;
    ~DllFolder()
    {
        if (_changed)
            Kernel32().SetDllDirectory(_before);
    }

private:
    wchar_t _before[moduleNameLength + 1] = {};
    bool _changed = false;
};

} // namespace

void SetLateLoadLog(bool on)
{
    lateLoadLog = on;
}

bool LateProcedure::Resolve()
{
    const FARPROC address = _library.Resolve(_name, _state, _argumentBytes);
    _address.store(address, std::memory_order_release);
    return address != nullptr;
}

CLateLoadBase::CLateLoadBase(const wchar_t* moduleName, std::size_t skippedCharacters)
    : _moduleName(moduleName, 0, moduleNameLength - 1),
      _skippedCharacters(skippedCharacters)
{
}

CLateLoadBase::~CLateLoadBase()
{
    if (_module && _freeOnDestruction)
        FreeLibrary(_module);
}

bool CLateLoadBase::Load()
{
    clsCriticalSectionLock lock(_lock);
    HMODULE module = LoadLibraryW(_moduleName);
    DWORD error = module ? 0 : GetLastError();
    if (!module && IsOwnModule())
    {
        module = LoadFromOwnFolder(_moduleName);
        error = module ? 0 : GetLastError();
    }
    if (FinishLoad(module, error))
        return true;
    if (!IsExpectedToBeMissing())
        Log(L"WRN: module '%s' could not be loaded: %s", _moduleName.Text(), String::SystemErrorText(error).Text());
    return false;
}

bool CLateLoadBase::FinishLoad(HMODULE module, DWORD error)
{
    _module = module;
    _lastLoadError = module ? 0 : (error ? error : unknownLoadError);
    return module != nullptr;
}

HMODULE CLateLoadBase::LoadFromOwnFolder(const wchar_t* fileName)
{
    const DllFolder folder(LibraryPaths().directory);
    return LoadLibraryW(fileName);
}

// The maker's own modules are told by the first two letters of their names.
bool CLateLoadBase::IsOwnModule() const
{
    return _wcsnicmp(_moduleName, L"TR", 2) == 0;
}

// Two libraries came with later systems.
bool CLateLoadBase::IsExpectedToBeMissing() const
{
    return (_wcsicmp(_moduleName, L"dwmapi") == 0 && SystemVersion() < 0x0600) ||
           (_wcsicmp(_moduleName, L"shcore") == 0 && SystemGeneration() < 0x0603);
}

void CLateLoadBase::Log(const wchar_t* format, ...)
{
    if (!lateLoadLog || !IsDebugLineActive())
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
    if (_moduleName.IsEmpty() && !_module)
        _moduleName.Assign(name, 0, moduleNameLength - 1);
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
    state = address ? LateState::valid : LateState::missing;
    return address;
}

FARPROC CLateLoadBase::FindByAnyName(const wchar_t* name, int argumentBytes) const
{
    std::array<String, 4> names;
    names[0] = name;
    names[1] = String(name) + L"W";
    names[2].Format(L"_%s@%d", name, argumentBytes);
    names[3].Format(L"_%s%c@%d", name, L'W', argumentBytes);
    // The shell has functions whose plain name takes 8-bit text.
    if (_wcsicmp(_moduleName, L"shell32") == 0)
        std::swap(names[0], names[1]);
    for (const String& candidate : names)
    {
        clsCharsetConversionString narrow(candidate.Text());
        if (const FARPROC address = GetProcAddress(_module, narrow.GetNarrow()))
            return address;
    }
    return nullptr;
}

} // namespace qx
