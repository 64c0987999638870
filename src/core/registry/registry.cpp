#include "core/registry/registry.h"

#include "core/debug_line.h"
#include "core/developer_run.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace qx
{

namespace
{

constexpr wchar_t kMachineSettings[] = L"software\\trelmo";
constexpr DWORD kFirstBuffer = 512; // in bytes

enum class Impersonation
{
    NotAsked,
    Ignored,
    Followed
};

std::atomic<Impersonation> impersonation = Impersonation::NotAsked;

Impersonation AskMachineSettings()
{
    clsRegistryList settings(HKEY_LOCAL_MACHINE, kMachineSettings, clsRegistryList::kRead);
    bool aware = false;
    settings.GetBool(L"Registry.ImpersonationAware", aware, false);
    return aware ? Impersonation::Followed : Impersonation::Ignored;
}

bool FollowsImpersonation()
{
    Impersonation known = impersonation.load(std::memory_order_relaxed);
    if (known == Impersonation::NotAsked)
    {
        known = AskMachineSettings();
        impersonation.store(known, std::memory_order_relaxed);
    }
    return known == Impersonation::Followed;
}

bool IsText(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

// Assigns a stored text, which may lack its terminator or contain more text after a terminator.
void AssignStored(String& result, const wchar_t* text, DWORD bytes)
{
    result.Assign(text, 0, wcsnlen(text, bytes / sizeof(wchar_t)));
}

} // namespace

HKEY UtilGetUserRootKey(bool readOnly)
{
    if (FollowsImpersonation())
    {
        HKEY key = nullptr;
        if (RegOpenCurrentUser(readOnly ? KEY_READ : KEY_ALL_ACCESS, &key) == ERROR_SUCCESS)
        {
            return key;
        }
        impersonation.store(Impersonation::Ignored, std::memory_order_relaxed);
    }
    return HKEY_CURRENT_USER;
}

void CloseUserRootKey(HKEY key)
{
    if (key != HKEY_CURRENT_USER)
    {
        RegCloseKey(key);
    }
}

void ForgetUserRootKey()
{
    impersonation.store(Impersonation::NotAsked, std::memory_order_relaxed);
}

clsRegistryList::clsRegistryList(HKEY root, const wchar_t* subkey, unsigned mode)
{
    const bool create = (mode & 3) == kCreate;
    const bool usersRoot = root == HKEY_CURRENT_USER;
    if (usersRoot)
    {
        root = UtilGetUserRootKey(!create);
    }
    if (subkey == nullptr)
    {
        DebugLine(L"ATTN: possibly non-ref-counted registry key acces...");
        _key = root;
        _ownsKey = root != HKEY_CURRENT_USER;
        return;
    }
    OpenSubkey(root, subkey, create);
    if (usersRoot)
    {
        CloseUserRootKey(root);
    }
}

void clsRegistryList::OpenSubkey(HKEY root, const wchar_t* subkey, bool create)
{
    const LSTATUS status = create ? RegCreateKeyExW(root, subkey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                        nullptr, &_key, nullptr)
                                  : RegOpenKeyExW(root, subkey, 0, KEY_READ, &_key);
    if (status == ERROR_SUCCESS)
    {
        _ownsKey = true;
        return;
    }
    _key = nullptr;
    _result = create ? kNotCreated : kNotOpened;
    if (create && UtilIsDeveloperRun())
    {
        DebugLine(L"WRN: clsRegistryList::ct() cannot create subkey '%s' in key %#p: %s", subkey, root,
            String::SystemErrorText(static_cast<unsigned>(status)).Text());
    }
}

clsRegistryList::~clsRegistryList()
{
    if (_key != nullptr && _ownsKey)
    {
        RegCloseKey(_key);
    }
}

std::int32_t clsRegistryList::GetString(const wchar_t* name, String& result, const wchar_t* defaultText)
{
    _result = ReadText(name, result);
    if (_result != kDone)
    {
        result.Assign(defaultText);
    }
    return _result;
}

std::int32_t clsRegistryList::ReadText(const wchar_t* name, String& result) const
{
    if (_key == nullptr)
    {
        return kNotOpen;
    }
    wchar_t buffer[kFirstBuffer / sizeof(wchar_t)];
    DWORD type = REG_NONE;
    DWORD bytes = kFirstBuffer;
    const LSTATUS status = RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &bytes);
    if ((status != ERROR_SUCCESS && status != ERROR_MORE_DATA) || !IsText(type))
    {
        return kUnreadable;
    }
    if (status == ERROR_SUCCESS)
    {
        AssignStored(result, buffer, bytes);
        return kDone;
    }

    std::vector<wchar_t> whole(bytes / sizeof(wchar_t) + 1);
    bytes = static_cast<DWORD>(whole.size() * sizeof(wchar_t));
    if (RegQueryValueExW(_key, name, nullptr, &type, reinterpret_cast<BYTE*>(whole.data()), &bytes) != ERROR_SUCCESS ||
        !IsText(type))
    {
        return kSecondReadFailed;
    }
    AssignStored(result, whole.data(), bytes);
    return kDone;
}

std::int32_t clsRegistryList::GetBool(const wchar_t* name, bool& result, bool defaultValue)
{
    String text;
    const bool found = GetString(name, text, L"") == kDone;
    result = found ? text.CharAt(0) == L'T' : defaultValue;
    _result = found ? kDone : kNoValue;
    return _result;
}

} // namespace qx
