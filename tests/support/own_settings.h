// A private registry for this process, initially empty, as long as this object exists. Create it before any setting is
// read.
#pragma once

#include "support/temp_folder.h"

#include <windows.h>

#include <wchar.h>

#include <cstddef>

namespace qxtest
{

class OwnSettings
{
public:
#if defined(_WIN32) // all processes share one registry; its roots can be redirected for a process
    OwnSettings()
    {
        _name.Format(L"Software\\qxut-test-%d", static_cast<int>(GetCurrentProcessId()));
        _user = Make(L"\\user");
        _machine = Make(L"\\machine");
        RegOverridePredefKey(HKEY_CURRENT_USER, _user);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, _machine);
    }
    ~OwnSettings()
    {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(_machine);
        RegCloseKey(_user);
        RegDeleteTreeW(HKEY_CURRENT_USER, _name.Text());
    }
#else
    OwnSettings()
    {
        GetEnvironmentVariableW(L"QXPLATFORM_HOME", _before, MAX_PATH);
        SetEnvironmentVariableW(L"QXPLATFORM_HOME", _folder.Path().Text());
    }
    ~OwnSettings()
    {
        SetEnvironmentVariableW(L"QXPLATFORM_HOME", _before[0] != 0 ? _before : nullptr);
    }
#endif
    OwnSettings(const OwnSettings&) = delete;
    OwnSettings& operator=(const OwnSettings&) = delete;

    // Stores a value under the library's key or another one. Returns false on failure.
    bool Set(HKEY root, const wchar_t* name, const wchar_t* text, const wchar_t* keyName = kLibrarys) const
    {
        return Set(root, name, REG_SZ, text, (wcslen(text) + 1) * sizeof(wchar_t), keyName);
    }
    bool Set(HKEY root, const wchar_t* name, DWORD type, const void* data, std::size_t bytes,
        const wchar_t* keyName = kLibrarys) const
    {
        HKEY key = nullptr;
        if (RegCreateKeyExW(root, keyName, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) != 0)
            return false;
        const LSTATUS status =
            RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(bytes));
        RegCloseKey(key);
        return status == ERROR_SUCCESS;
    }

private:
    static constexpr wchar_t kLibrarys[] = L"Software\\trelmo";
#if defined(_WIN32) // creates the keys to which the roots are redirected
    HKEY Make(const wchar_t* part) const
    {
        HKEY key = nullptr;
        RegCreateKeyExW(
            HKEY_CURRENT_USER, (_name + part).Text(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        return key;
    }

    qx::String _name;
    HKEY _user = nullptr;
    HKEY _machine = nullptr;
#else
    TempFolder _folder;
    wchar_t _before[MAX_PATH + 1] = {};
#endif
};

} // namespace qxtest
