// Countries and languages.
#include <qxut23/countries.h>

#include "exports/guard.h"
#include "locale/countries.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdint>

using namespace qx;

namespace
{

void Give(VARIANT* info, int value)
{
    info->vt = VT_I4;
    info->lVal = value;
}

// Leaves the variant empty if memory runs out.
void Give(VARIANT* info, const String& text)
{
    info->bstrVal = SysAllocStringLen(text, static_cast<UINT>(text.Length()));
    info->vt = info->bstrVal ? VT_BSTR : VT_EMPTY;
}

void GiveCountryInfo(const String& name, std::uint32_t type, VARIANT* info)
{
    clsCountries& countries = Countries();
    switch (type)
    {
    case QXUT_COUNTRY_LCID:
        return Give(info, static_cast<int>(countries.Locale(name)));
    case QXUT_COUNTRY_CALLING_CODE:
        return Give(info, countries.CallingCode(name));
    case QXUT_COUNTRY_ISO3166:
        return Give(info, countries.IsoCode(name));
    case QXUT_COUNTRY_CURRENCY:
        return Give(info, countries.Currency(name));
    case QXUT_COUNTRY_CODE_PAGE:
        return Give(info, countries.CodePage(name));
    case QXUT_COUNTRY_ENGLISH_NAME:
        return Give(info, countries.EnglishName(name));
    case QXUT_COUNTRY_NATIVE_NAME:
        return Give(info, countries.NativeName(name));
    default:
        return;
    }
}

} // namespace

std::int32_t UtilLocGetCountryList(QXWCHAR** list)
{
    return Guarded(0,
        [&]
        {
            const String keys = Countries().List();
            if (list)
                keys.ToBSTR(list);
            return 0;
        });
}

std::int32_t UtilLocGetCountryInfo(const QXWCHAR* name, std::uint32_t type, VARIANT* info)
{
    if (!info)
        return QXUT_COUNTRY_NO_TYPE;
    VariantClear(info);
    if (type > QXUT_COUNTRY_NATIVE_NAME)
        return QXUT_COUNTRY_NO_TYPE;
    return Guarded(0, [&] { return GiveCountryInfo(name ? name : L"", type, info), 0; });
}

std::int32_t UtilLocGetLanguageInfo(const QXWCHAR* name, std::int32_t type, VARIANT* info)
{
    if (!info)
        return QXUT_COUNTRY_NO_TYPE;
    VariantClear(info);
    if (type != QXUT_LANGUAGE_LCID)
        return QXUT_COUNTRY_NO_TYPE;
    return Guarded(0, [&] { return Give(info, static_cast<int>(Countries().Language(name ? name : L""))), 0; });
}
