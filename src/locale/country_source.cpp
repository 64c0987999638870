#include "locale/country_source.h"

#include "core/system_values.h"
#include "module/late_libraries.h"

#include <windows.h>

#include <wchar.h>

#include <iterator>

namespace qx
{

namespace
{

constexpr int kInfoCharacters = 100;
constexpr int kNameCharacters = 85;
constexpr unsigned short kVista = 0x600;

// The callback of the older enumeration has no user argument. Only one load runs at a time.
WCValSList<LCID>* listOfAll = nullptr;

BOOL CALLBACK OnLocale(LPWSTR number)
{
    listOfAll->Append(static_cast<LCID>(wcstoul(number, nullptr, 16)));
    return TRUE;
}

BOOL CALLBACK OnLocaleOfGroup(LGRPID, LCID locale, LPWSTR, LONG_PTR list)
{
    // Skip alternative sort orders of the same locale.
    if (SORTIDFROMLCID(locale) == SORT_DEFAULT)
        reinterpret_cast<WCValSList<LCID>*>(list)->Append(locale);
    return TRUE;
}

BOOL CALLBACK OnGroup(LGRPID group, LPWSTR, LPWSTR, DWORD, LONG_PTR list)
{
    Kernel32().p_EnumLanguageGroupLocales(OnLocaleOfGroup, group, 0, list);
    return TRUE;
}

class clsSystemCountrySource : public clsCountrySource
{
public:
    WCValSList<LCID> Locales() const override
    {
        WCValSList<LCID> locales;
        clsKernel32& kernel = Kernel32();
        const bool hasGroups =
            kernel.p_EnumSystemLanguageGroups.IsThere() && kernel.p_EnumLanguageGroupLocales.IsThere();
        if (hasGroups &&
            kernel.p_EnumSystemLanguageGroups(OnGroup, LGRPID_SUPPORTED, reinterpret_cast<LONG_PTR>(&locales)))
            return locales;
        locales.Clear();
        listOfAll = &locales;
        EnumSystemLocalesW(OnLocale, LCID_SUPPORTED);
        listOfAll = nullptr;
        return locales;
    }

    bool Info(LCID locale, LCTYPE type, String& text) const override
    {
        wchar_t buffer[kInfoCharacters];
        if (GetLocaleInfoW(locale, type, buffer, kInfoCharacters) == 0)
            return false;
        text = buffer;
        return true;
    }

    String LocaleName(LCID locale) const override
    {
        wchar_t buffer[kNameCharacters];
        clsKernel32& kernel = Kernel32();
        const bool hasName = SystemVersion() >= kVista && kernel.p_LCIDToLocaleName.IsThere() &&
                             kernel.p_LCIDToLocaleName(locale, buffer, kNameCharacters, 0) != 0;
        return hasName ? String(buffer) : String();
    }

    String Row(int id) const override { return String::LoadResourceString(LibraryHandle(), LANG_NEUTRAL, id); }
};

} // namespace

const clsCountrySource& SystemCountrySource()
{
    static const clsSystemCountrySource source;
    return source;
}

bool ReadCountryName(const clsCountrySource& source, int id, scCountryName& row)
{
    String text = source.Row(id);
    if (text.Length() <= 1)
        return false;
    row.code = text.GetField(0, L'=', false);
    row.name = text.GetField(1, L'=', false);
    row.vehicleCode = text.GetField(2, L'=', false);
    return true;
}

} // namespace qx
