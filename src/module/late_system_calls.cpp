#include "core/system_calls.h"

#include "core/registry/registry.h"
#include "core/system_values.h"
#include "module/late_libraries.h"

namespace qx
{
namespace
{

constexpr unsigned kWindows7 = 0x0601;
constexpr unsigned kWindowsVista = 0x0600;

bool DecideForMapStringEx()
{
    if (SystemVersion() >= kWindows7)
        return true;
    bool isEnabled = false;
    clsRegistryList(HKEY_LOCAL_MACHINE, L"software\\trelmo\\", clsRegistryList::kRead)
        .GetBool(L"EnableMapStringEx", isEnabled, false);
    return isEnabled;
}

} // namespace

int MapInvariantString(unsigned flags, const wchar_t* source, int sourceLength, wchar_t* target, int targetLength)
{
    // LCMapStringEx uses the invariant rules, whereas LCMapStringW uses the rules of some language.
    static const bool useEx = SystemVersion() >= kWindowsVista && DecideForMapStringEx();
    if (!useEx)
        return LCMapStringW(LOCALE_INVARIANT, flags, source, sourceLength, target, targetLength);
    auto& mapStringEx = Kernel32().p_LCMapStringEx;
    return mapStringEx.IsThere()
               ? mapStringEx(L"", flags, source, sourceLength, target, targetLength, nullptr, nullptr, 0)
               : 0;
}

LANGID UserInterfaceLanguage()
{
    auto& language = Kernel32().p_GetUserDefaultUILanguage;
    return language.IsThere() ? language() : GetUserDefaultLangID();
}

} // namespace qx
