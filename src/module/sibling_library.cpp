#include "module/sibling_library.h"

#include <atomic>

namespace qx
{
namespace
{

// The only sibling version that this library works with.
constexpr int kFittingVersion = 23;

std::atomic<int> siblingVersion = kFittingVersion;

String FileNameOf(const wchar_t* filePart, int version)
{
    return String(String::kFormatted, L"%s%s%02d.dll", L"qx", filePart, version);
}

// Returns the already loaded library with an additional reference, or null if it isn't loaded.
HMODULE LoadPresent(const wchar_t* fileName)
{
    return GetModuleHandleW(fileName) ? LoadLibraryW(fileName) : nullptr;
}

} // namespace

int SiblingVersion()
{
    return siblingVersion.load(std::memory_order_relaxed);
}

void SetSiblingVersion(int version)
{
    siblingVersion.store(version, std::memory_order_relaxed);
}

CSiblingLibrary::CSiblingLibrary(const wchar_t* moduleName, const wchar_t* filePart)
    : CLateLoadBase(moduleName),
      _filePart(filePart)
{
}

bool CSiblingLibrary::Load()
{
    return LoadVersioned(_filePart, kFittingVersion, kFittingVersion, _foundVersion);
}

bool CSiblingLibrary::LoadVersioned(const wchar_t* filePart, int highest, int lowest, int& found)
{
    clsCriticalSectionLock lock(_lock);
    if (_module)
        return true;
    HMODULE(*const passes[])
    (const wchar_t*) = {
        LoadPresent, [](const wchar_t* name) -> HMODULE { return LoadLibraryW(name); }, LoadFromOwnFolder};
    HMODULE module = nullptr;
    int version = kFittingVersion;
    for (const auto load : passes)
    {
        for (int tried = highest; tried >= lowest && !module; --tried)
        {
            module = load(FileNameOf(filePart, tried));
            if (!module)
                continue;
            version = tried;
            _wasPresent = load == LoadPresent;
        }
    }
    if (!module)
        module = LoadLibraryW(FileNameOf(filePart, kFittingVersion));
    if (!FinishLoad(module, module ? 0 : GetLastError()))
        return false;
    SetModuleName(L"");
    found = version;
    return true;
}

} // namespace qx
