#include "docinfo/com_guard.h"

#include "core/debug_line.h"
#include "core/text/string.h"
#include "module/module_paths.h"

namespace qx
{
namespace
{

constexpr std::uint32_t kSingleThreaded = COINIT_APARTMENTTHREADED;

// Returns the apartment model that the registry sets for this program, or single-threaded if there is no setting.
std::uint32_t ReadApartmentModel()
{
    const String path = String(L"Software\\trelmo\\TRLMRG\\") + ProcessBaseName();
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.Text(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return kSingleThreaded;
    DWORD model = 0, type = 0, size = sizeof model;
    const LSTATUS result =
        RegQueryValueExW(key, L"ApartmentModel", nullptr, &type, reinterpret_cast<BYTE*>(&model), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && type == REG_DWORD ? model : kSingleThreaded;
}

} // namespace

clsCOMInitialize::clsCOMInitialize()
{
    if (Model() == _leaveAlone)
        return;
    _result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (Model() != kSingleThreaded)
        DebugLine(L"sorry, requested threading mode differs from the forced one (defined in the registry)");
}

clsCOMInitialize::~clsCOMInitialize()
{
    if (_model != _leaveAlone && SUCCEEDED(_result))
        CoUninitialize();
}

std::uint32_t clsCOMInitialize::Model()
{
    if (_model == _notRead)
        _model = ReadApartmentModel();
    return _model;
}

} // namespace qx
