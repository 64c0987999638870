#include "diag/log_setting.h"

#include <wchar.h>

namespace qx
{
namespace
{

LSTATUS StoreText(HKEY key, const wchar_t* name, const wchar_t* text)
{
    const auto bytes = static_cast<DWORD>((wcslen(text) + 1) * sizeof(wchar_t));
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes);
}

LSTATUS Store(HKEY key, const wchar_t* name, bool isFlushed)
{
    if (!name || !*name)
    {
        const LSTATUS status = RegDeleteValueW(key, kLogFileValue);
        return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status; // the log was off
    }
    const LSTATUS status = StoreText(key, kLogFlushValue, isFlushed ? L"True" : L"False");
    return status != ERROR_SUCCESS ? status : StoreText(key, kLogFileValue, name);
}

} // namespace

LSTATUS StoreLogSetting(const wchar_t* name, bool isFlushed)
{
    HKEY key = nullptr;
    LSTATUS status = RegCreateKeyExW(
        HKEY_LOCAL_MACHINE, kSettingsKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    status = Store(key, name, isFlushed);
    RegCloseKey(key);
    return status;
}

} // namespace qx
